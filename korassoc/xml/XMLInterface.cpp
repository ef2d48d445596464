#include "korassoc/xml/XMLInterface.h"

namespace KorAssocXML {

XMLInterface::~XMLInterface() = default;

}  // namespace KorAssocXML
