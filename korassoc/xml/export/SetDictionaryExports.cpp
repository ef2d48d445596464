#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/xml/export/LatticeDocument.h"

using KorAssoc::KorStatus;

KorStatus SetDictionary::exportLatticeXML(std::ostream& out, double minSupport) {
  korassoc::detail::LatticeDocument(*this, minSupport).write(out);
  return status_;
}
