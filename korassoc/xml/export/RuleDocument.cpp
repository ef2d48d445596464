#include "korassoc/xml/export/RuleDocument.h"

#include <ostream>
#include <string>

#include "korassoc/xml/XMLTree.h"
#include "korassoc/xml/export/DocumentVocabulary.h"
#include "korassoc/xml/export/ElementSequence.h"

using KorAssocXML::XMLElement;

namespace korassoc::detail {
namespace {

constexpr const char* kFields[] = {"transaction", "item"};

void addDataDictionary(XMLElement& root) {
  XMLElement& dictionary = addElement(root, "DataDictionary");
  dictionary.AddAttribute("numberOfFields", 2);
  for (const char* name : kFields) {
    XMLElement& field = addElement(dictionary, "DataField");
    field.AddAttribute("name", name);
    field.AddAttribute("optype", "categorical");
    field.AddAttribute("dataType", "string");
  }
}

void addMiningSchema(XMLElement& model) {
  XMLElement& schema = addElement(model, "MiningSchema");
  for (const char* name : kFields) addElement(schema, "MiningField").AddAttribute("name", name);
}

}  // namespace

RuleDocument::RuleDocument(SetDictionary& dictionary, const std::vector<AssociationRule>& rules,
                           const RuleDocumentTerms& terms)
    : dictionary_(dictionary),
      rules_(rules),
      terms_(terms),
      index_(rules),
      transactions_(dictionary.getEmptySetCount()) {}

void RuleDocument::write(std::ostream& out) const {
  const MiningAlgorithm algorithm = algorithmOf(dictionary_);
  const std::string namespaceUri = kPmml32.namespaceUri;
  const Element root = newElement("PMML");
  root->AddAttribute("version", kPmml32.number);
  root->AddAttribute("xmlns", namespaceUri);
  root->AddAttribute("xmlns:xsi", kSchemaInstanceUri);
  root->AddAttribute("xsi:schemaLocation", namespaceUri + ' ' + kPmml32.schemaFile);
  addHeader(*root, algorithm,
            std::string(algorithm.inText) + " model for " + (terms_.nonRedundant ? "nonredundant" : "all") +
                " association rules");
  addDataDictionary(*root);
  addModel(*root, algorithm);
  WriteTree(out, nullptr, root.get(), true);
}

void RuleDocument::addModel(XMLElement& root, const MiningAlgorithm& algorithm) const {
  XMLElement& model = addElement(root, "AssociationModel");
  model.AddAttribute("modelName", std::string(algorithm.name) + " model for association");
  model.AddAttribute("functionName", "associationRules");
  model.AddAttribute("algorithmName", algorithm.name);
  model.AddAttribute("numberOfTransactions", transactions_);
  model.AddAttribute("minimumSupport", terms_.minSupport);
  model.AddAttribute("minimumConfidence", terms_.minConfidence);
  model.AddAttribute("lengthLimit", dictionary_.maxLevel());
  model.AddAttribute("numberOfItems", index_.items().count());
  model.AddAttribute("numberOfItemsets", index_.numberOfItemsets());
  model.AddAttribute("numberOfRules", static_cast<double>(rules_.size()));
  addMiningSchema(model);
  model.AddElement(ElementSequence::Create([this](const ElementSequence::Sink& sink) {
    for (int reference = 1; reference <= index_.items().count(); ++reference) {
      if (!sink(*item(reference))) return;
    }
    for (int id = 1; id <= index_.numberOfItemsets(); ++id) {
      if (!sink(*itemset(id))) return;
    }
    for (const AssociationRule& each : rules_) {
      if (!sink(*rule(each))) return;
    }
  }));
}

Element RuleDocument::item(int reference) const {
  Element element = newElement("Item");
  element->AddAttribute("id", reference);
  element->AddAttribute("value", index_.items().itemAt(reference));
  return element;
}

Element RuleDocument::itemset(int id) const {
  const ItemSet& set = *index_.itemsets()[static_cast<std::size_t>(id) - 1];
  Element element = newElement("Itemset");
  element->AddAttribute("id", id);
  element->AddAttribute("support", dictionary_.getCount(&set) / transactions_);
  element->AddAttribute("numberOfItems", set.length());
  addItemRefs(*element, set.getTheArray(), set.length(), index_.items());
  return element;
}

Element RuleDocument::rule(const AssociationRule& rule) const {
  Element element = newElement("AssociationRule");
  element->AddAttribute("support", rule.getSupport());
  element->AddAttribute("confidence", rule.getConfidence());
  element->AddAttribute("antecedent", index_.idOf(rule.getAntecedent()));
  element->AddAttribute("consequent", index_.idOf(rule.getConsequent()));
  return element;
}

}  // namespace korassoc::detail
