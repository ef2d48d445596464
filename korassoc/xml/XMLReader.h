// Reads the XML state format back, line by line, in exactly the order in which it was written.

#pragma once

#include <cstdint>
#include <fstream>
#include <initializer_list>
#include <string>
#include <string_view>

#include "korassoc/base/Export.h"

namespace KorAssocXML {

// Every call takes one line from the stream, whatever it holds, and answers whether it was the line expected
// (ParseStartXML takes three lines, ParseStartObj a second one when the first is empty).
//
//   Lines: at most 255 characters, ended by a line feed or the end of the file. A longer one sets the
//     stream's fail bit; what lies beyond those characters is not read. A zero byte ends a line's text early.
//   Values: as the text stands, with its entities; indentation and what follows the value do not matter.
//   False: another element, a value missing, a line too long, the stream at its end or failed. Nothing is
//     printed, and the target keeps its value.
//   Memory: none that depends on the file, but for the text of a string (below 255 bytes).

// The document head: declaration, DOCTYPE and root element.
KORASSOC_EXPORT bool ParseStartXML(std::ifstream& in);

// <Obj name="...">, with exactly that name.
KORASSOC_EXPORT bool ParseStartObj(std::ifstream& in, const std::string& name);

// <Int value="..."/>, converted as atoi does: text that is no number gives 0, one beyond the range the
// nearest value in it.
KORASSOC_EXPORT bool ParseValue(std::ifstream& in, int& value);

// <Int value="..."/>, converted as atof does and truncated; beyond the range the nearest value in it, and 0
// for what is not a number.
KORASSOC_EXPORT bool ParseValue(std::ifstream& in, unsigned int& value);

// <Long value="..."/>, converted as atol does; beyond the range of long the nearest value in it.
KORASSOC_EXPORT bool ParseValue(std::ifstream& in, long& value);

// <Double value="..."/>: "Missing" gives KorMV::Missing(), anything else is read as a stream in the classic
// locale reads a double. False for text that is no number or beyond the range of double.
KORASSOC_EXPORT bool ParseValue(std::ifstream& in, double& value);

// <String value="..."/>: the text up to the next double quote or the line's end.
KORASSOC_EXPORT bool ParseValue(std::ifstream& in, std::string& value);

// <Int value="..."/> with 0 or 1; any other number is refused.
KORASSOC_EXPORT bool ParseValue(std::ifstream& in, bool& value);

// </Obj>.
KORASSOC_EXPORT bool ParseEndObj(std::ifstream& in);

}  // namespace KorAssocXML

namespace korassoc::detail {

// Lines of an object besides its values and inner objects: its start and its end.
inline constexpr std::uint64_t kFrameLines = 2;

// As ParseStartObj, for an object that may have one of several names: the place of its name among them, or
// -1.
int parseStartObj(std::ifstream& in, std::initializer_list<std::string_view> names);

// As ParseValue(in, std::string&), from an Int line too: its value's text, whatever it is. For the line of
// the settings' record that is written as a flag and read as a text.
bool parseTextOrFlag(std::ifstream& in, std::string& value);

}  // namespace korassoc::detail
