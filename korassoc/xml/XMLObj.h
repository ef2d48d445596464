// Writes one persistent object of the XML state format: its frame and its value lines.

#pragma once

#include <iosfwd>
#include <string>

#include "korassoc/base/Export.h"

namespace KorAssocXML {

// An XMLObj knows the object's tag name and its depth, and holds no stream:
//
//   XMLObj object("ItemSet", 1);          "\n\t<Obj name="ItemSet">"
//   object.StartObj(out);                 "\n\t\t<Int value="3"/>"
//   object.WriteSubElement(out, 3);       "\n\t</Obj>"
//   object.EndObj(out);
//
// Every line has its line feed in front. An object within another one is written between two of the outer
// one's values, as a rule by an XMLObj with one tab more.
// Numbers have 15 significant digits and a decimal point, whatever the locale.
// Errors: all operations return 0. A stream that has failed drops what it is given; look at its state between
//   values.
class KORASSOC_EXPORT XMLObj {
 public:
  // The name is written as it stands, unescaped. tabs below 0 count as 0.
  XMLObj(std::string name, int tabs);

  int GetNTabs() const { return tabs_; }

  int StartObj(std::ostream& out) const;
  int WriteSubElement(std::ostream& out, int value) const;           // <Int value="5"/>
  int WriteSubElement(std::ostream& out, unsigned int value) const;  // <Int value="5"/>
  int WriteSubElement(std::ostream& out, bool value) const;  // <Int value="1"/>: 1 for true, 0 for false
  // <Long value="5"/>. Made for 32-bit values; beyond 10^15 digits are rounded away.
  int WriteSubElement(std::ostream& out, long value) const;
  // <Double value="0.5"/>; KorMV::Missing() is written as the word Missing.
  int WriteSubElement(std::ostream& out, double value) const;
  // <String value="text"/>, the text escaped as in XMLAttribute. Hand over a std::string: a plain char
  // pointer would be taken as a bool.
  int WriteSubElement(std::ostream& out, const std::string& value) const;
  int EndObj(std::ostream& out) const;

 private:
  std::string name_;
  int tabs_;
};

}  // namespace KorAssocXML
