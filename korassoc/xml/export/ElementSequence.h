// Children of an element that are made one at a time, while the document is written.

#pragma once

#include <functional>
#include <iosfwd>
#include <string>

#include "korassoc/xml/XMLElement.h"

namespace korassoc::detail {

// An ElementSequence stands among the children of an element for any number of siblings in a row:
//
//   Model                                    Model
//     MiningSchema                             MiningSchema
//     ElementSequence ---- is written as --->  Rule 1
//                                              Rule 2 ...
//
// A document of a million rules so needs the memory of one rule's element. The text is that of the tree with
// all the siblings in it, but for an element whose only child is a sequence that turns out empty: it is
// written with a start tag and an end tag. Whoever builds the tree leaves such a sequence out.
class ElementSequence : public KorAssocXML::XMLElement {
 public:
  // Writes one element, which is not needed any longer afterwards. False: the stream has failed, so nothing
  // more will reach it and the producer may stop.
  using Sink = std::function<bool(const KorAssocXML::XMLElement&)>;
  // Makes the siblings in order and hands each to the sink. Called once each time the document is written,
  // with the same outcome every time; what it refers to must live until then.
  using Producer = std::function<void(const Sink&)>;

  // A new sequence. The caller owns it.
  static ElementSequence* Create(Producer produce);

  int ToString(std::string& out, KorAssocXML::ExportFormat& format) const override;
  int ToStream(std::ostream& out, KorAssocXML::ExportFormat& format, bool utf8) const override;

 private:
  explicit ElementSequence(Producer produce);

  Producer produce_;
};

}  // namespace korassoc::detail
