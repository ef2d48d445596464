// How an element tree is laid out while it is written.

#pragma once

#include "korassoc/base/Export.h"

namespace KorAssocXML {

// Three flags that the caller sets, and the depth that the writers keep. A text node switches the paragraph
// and indentation flags off while it is written, and an element that goes to a stream switches both on at its
// end; so a format that has been written with may come back changed.
class KORASSOC_EXPORT ExportFormat {
 public:
  // Whether elements and attributes are indented, by one tab a level.
  bool HasIndentation() const { return format_ && indentation_; }
  // Whether elements and attributes start on a line of their own.
  bool IsNewParagraph() const { return format_ && newParagraph_; }

  // Off: no line feeds and no tabs, whatever the other two flags say.
  void SetFormat(bool format) { format_ = format; }
  void SetIndentation(bool indentation) { indentation_ = indentation; }
  void SetIsNewParagraph(bool newParagraph) { newParagraph_ = newParagraph; }

  // The depth of the node that is written next: 0 for the root. Writers raise it while they descend and lower
  // it again; below 0 it counts as 0.
  int level = 0;

 private:
  bool newParagraph_ = true;
  bool indentation_ = true;
  bool format_ = true;
};

}  // namespace KorAssocXML
