#include "korassoc/xml/XMLWriter.h"

#include "korassoc/xml/XMLText.h"

namespace KorAssocXML {

int StartRoot(std::ostream& out, const std::string& copyright) {
  std::string line = "<KorXMLRoot ";
  korassoc::detail::appendAttribute(line, "copyright", copyright);
  line += '>';
  korassoc::detail::putText(out, line);
  return 0;
}

int WriteHeader(std::ostream& out, const std::string& copyright) { return StartRoot(out, copyright); }

int EndRoot(std::ostream& out) {
  korassoc::detail::putText(out, "\n</KorXMLRoot>");
  return 0;
}

int EndHeader(std::ostream& out) { return EndRoot(out); }

}  // namespace KorAssocXML
