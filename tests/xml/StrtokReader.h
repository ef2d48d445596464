// The record reader told with the C library's strtok, atoi and atof, token by token: what XMLReader is
// compared with. Overflow, which those leave undefined, ends at the nearest value.

#pragma once

#include <istream>
#include <string>

namespace strtok_reader {

bool ParseStartXML(std::istream& in);
bool ParseStartObj(std::istream& in, const std::string& name);
bool ParseValue(std::istream& in, int& value);
bool ParseValue(std::istream& in, unsigned int& value);
bool ParseValue(std::istream& in, long& value);
bool ParseValue(std::istream& in, double& value);
bool ParseValue(std::istream& in, std::string& value);
bool ParseValue(std::istream& in, bool& value);
bool ParseEndObj(std::istream& in);

}  // namespace strtok_reader
