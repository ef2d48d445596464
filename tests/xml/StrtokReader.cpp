#include "tests/xml/StrtokReader.h"

#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <locale>
#include <sstream>

namespace strtok_reader {
namespace {

bool readLine(std::istream& in, char (&buffer)[256]) {
  in.getline(buffer, 256);
  return !in.fail() && !in.bad();
}

bool is(const char* token, const char* expected) {
  return token != nullptr && std::strcmp(token, expected) == 0;
}

// The third token of a number's line, or null.
char* number(std::istream& in, char (&buffer)[256], const char* element) {
  if (!readLine(in, buffer)) return nullptr;
  if (!is(std::strtok(buffer, " \t\r\n=<\""), element)) return nullptr;
  if (!is(std::strtok(nullptr, "=\""), "value")) return nullptr;
  return std::strtok(nullptr, " \t\r\n=<\"");
}

int toInt(const char* text) {
  const long value = std::strtol(text, nullptr, 10);  // saturates
  if (value > INT_MAX) return INT_MAX;
  if (value < INT_MIN) return INT_MIN;
  return static_cast<int>(value);
}

}  // namespace

bool ParseStartXML(std::istream& in) {
  const char* const expected[] = {"?xml", "!DOCTYPE", "KorXMLRoot"};
  bool ok = true;
  for (const char* first : expected) {
    char buffer[256];
    if (!readLine(in, buffer) || !is(std::strtok(buffer, " \t\r\n<>=\""), first)) ok = false;
  }
  return ok;
}

bool ParseStartObj(std::istream& in, const std::string& name) {
  char buffer[256];
  if (!readLine(in, buffer)) return false;
  if (buffer[0] == '\0' && !readLine(in, buffer)) return false;
  if (!is(std::strtok(buffer, " \t\r\n<=\""), "Obj")) return false;
  if (!is(std::strtok(nullptr, " \t\r\n<=\""), "name")) return false;
  return is(std::strtok(nullptr, "\""), name.c_str());
}

bool ParseValue(std::istream& in, int& value) {
  char buffer[256];
  const char* const token = number(in, buffer, "Int");
  if (token == nullptr) return false;
  value = toInt(token);
  return true;
}

bool ParseValue(std::istream& in, unsigned int& value) {
  char buffer[256];
  const char* const token = number(in, buffer, "Int");
  if (token == nullptr) return false;
  const double real = std::strtod(token, nullptr);
  if (std::isnan(real) || real < 0) {
    value = 0;
  } else if (real > UINT_MAX) {
    value = UINT_MAX;
  } else {
    value = static_cast<unsigned int>(real);
  }
  return true;
}

bool ParseValue(std::istream& in, long& value) {
  char buffer[256];
  const char* const token = number(in, buffer, "Long");
  if (token == nullptr) return false;
  value = std::strtol(token, nullptr, 10);
  return true;
}

bool ParseValue(std::istream& in, double& value) {
  char buffer[256];
  const char* const token = number(in, buffer, "Double");
  if (token == nullptr) return false;
  if (std::strcmp(token, "Missing") == 0) {
    value = std::numeric_limits<double>::lowest();
    return true;
  }
  std::istringstream stream(token);
  stream.imbue(std::locale::classic());
  double read = 0;
  stream >> read;
  if (stream.fail()) return false;
  value = read;
  return true;
}

bool ParseValue(std::istream& in, std::string& value) {
  char buffer[256];
  if (!readLine(in, buffer)) return false;
  if (!is(std::strtok(buffer, " \t\r\n=<\""), "String")) return false;
  if (!is(std::strtok(nullptr, "=\""), "value")) return false;
  const char* const token = std::strtok(nullptr, "\r\n\"");
  value = token == nullptr || std::strcmp(token - 2, "\"\"/>") == 0 ? "" : token;
  return true;
}

bool ParseValue(std::istream& in, bool& value) {
  int number = 0;
  if (!ParseValue(in, number)) return false;
  if (number != 0 && number != 1) return false;
  value = number == 1;
  return true;
}

bool ParseEndObj(std::istream& in) {
  char buffer[256];
  return readLine(in, buffer) && is(std::strtok(buffer, " \t\r\n<>"), "/Obj");
}

}  // namespace strtok_reader
