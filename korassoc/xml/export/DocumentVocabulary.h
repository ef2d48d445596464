// Names that the exported documents refer to.

#pragma once

namespace korassoc::detail {

// A version of the Predictive Model Markup Language.
struct PmmlVersion {
  const char* number;
  const char* namespaceUri;
  const char* schemaFile;
};

inline constexpr PmmlVersion kPmml32 = {"3.2", "http://www.dmg.org/PMML-3_2", "pmml-3-2.xsd"};
inline constexpr PmmlVersion kPmml40 = {"4.0", "http://www.dmg.org/PMML-4_0", "pmml-4-0.xsd"};
inline constexpr PmmlVersion kPmml41 = {"4.1", "http://www.dmg.org/PMML-4_1", "pmml-4-1.xsd"};
inline constexpr PmmlVersion kPmml42 = {"4.2", "http://www.dmg.org/PMML-4_2", "pmml-4-2.xsd"};

inline constexpr const char* kSchemaInstanceUri = "http://www.w3.org/2001/XMLSchema-instance";

inline constexpr const char* kLatticeDtd = "associationmodellattice.dtd";
inline constexpr const char* kRuleDtd = "associationmodel.dtd";  // for a rule document with a document type

}  // namespace korassoc::detail
