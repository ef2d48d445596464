#include "korassoc/xml/XMLTree.h"

#include "korassoc/base/Platform.h"
#include "korassoc/xml/XMLText.h"

namespace KorAssocXML {
namespace {

int writeDocument(std::ostream& out, const XMLDocType* docType, const XMLElement* root, bool format,
                  bool utf8) {
  ExportFormat layout;
  layout.SetFormat(format);
  if (docType != nullptr) {
    docType->ToStream(out, layout, utf8);
  } else {
    const std::string declaration = std::string(korassoc::detail::kXmlDeclaration) + '\n';
    utf8 ? WriteUTF(out, declaration) : Write(out, declaration);
  }
  root->ToStream(out, layout, utf8);
  return 0;
}

}  // namespace

int Write(std::ostream& out, const std::string& text) {
  korassoc::detail::putText(out, text);
  return 0;
}

int WriteUTF(std::ostream& out, const std::string& text) {
  korassoc::detail::putText(out, korassoc::detail::utf8FromNarrow(text));
  return 0;
}

int WriteTree(std::ostream& out, const XMLDocType* docType, const XMLElement* root, bool format) {
  return writeDocument(out, docType, root, format, false);
}

int WriteTreeUTF8(std::ostream& out, const XMLDocType* docType, const XMLElement* root, bool format) {
  return writeDocument(out, docType, root, format, true);
}

}  // namespace KorAssocXML
