#include "cli/RuleQuery.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korassoc::cli {
namespace {

using ::testing::ElementsAre;

ItemSet set(const std::vector<int>& items) { return ItemSet(items.data(), static_cast<int>(items.size())); }

RuleQuery query() {
  RuleQuery all;
  all.transactions = all.maxCount = 10;
  return all;
}

TEST(SideFilter, HoldsLengthRequiredAndAllowedItems) {
  SideFilter filter;
  filter.length = {1, 2};
  EXPECT_TRUE(filter.accepts(set({7})));
  EXPECT_FALSE(filter.accepts(ItemSet()));
  EXPECT_FALSE(filter.accepts(set({1, 2, 3})));
  filter.required = {2};
  EXPECT_TRUE(filter.accepts(set({2, 7})));
  EXPECT_FALSE(filter.accepts(set({7})));
  filter.allowed = {{2, 3}};
  EXPECT_TRUE(filter.accepts(set({2, 3})));
  EXPECT_FALSE(filter.accepts(set({2, 7})));
}

TEST(RuleQuery, AcceptsUpToItsBounds) {
  const AssociationRule rule(set({1}), set({2}), 0.3, 0.6, 1.5);
  struct Case {
    const char* what;
    void (*change)(RuleQuery&);
    bool accepted;
  };
  const Case cases[] = {{"all", [](RuleQuery&) {}, true},
                        {"least count met", [](RuleQuery& q) { q.minCount = 3; }, true},
                        {"least count missed", [](RuleQuery& q) { q.minCount = 4; }, false},
                        {"largest count met", [](RuleQuery& q) { q.maxCount = 3; }, true},
                        {"largest count passed", [](RuleQuery& q) { q.maxCount = 2; }, false},
                        {"least confidence met", [](RuleQuery& q) { q.minConfidence = 0.6; }, true},
                        {"least confidence missed", [](RuleQuery& q) { q.minConfidence = 0.61; }, false},
                        {"largest confidence met", [](RuleQuery& q) { q.maxConfidence = 0.6; }, true},
                        {"largest confidence passed", [](RuleQuery& q) { q.maxConfidence = 0.59; }, false},
                        {"least lift met", [](RuleQuery& q) { q.minLift = 1.5; }, true},
                        {"least lift missed", [](RuleQuery& q) { q.minLift = 1.51; }, false},
                        {"left side refused", [](RuleQuery& q) { q.lhs.required = {2}; }, false},
                        {"right side refused", [](RuleQuery& q) { q.rhs.required = {1}; }, false}};
  for (const Case& c : cases) {
    RuleQuery changed = query();
    c.change(changed);
    EXPECT_EQ(changed.accepts(rule), c.accepted) << c.what;
  }
}

TEST(RuleQuery, ArrangesByEachFigureAndBreaksTiesAsTheEngine) {
  //                                            support confidence lift
  const std::vector<AssociationRule> rules = {{set({5}), set({1}), 0.2, 0.9, 1.0},
                                              {set({4}), set({1}), 0.4, 0.5, 3.0},
                                              {set({3, 4}), set({1}), 0.2, 0.9, 1.0},
                                              {set({5}), set({0}), 0.3, 0.9, 1.0},
                                              {set({4}), set({0}), 0.2, 0.9, 1.0}};
  const auto arranged = [&](RuleQuery::Order order, int top) {
    RuleQuery asked = query();
    asked.order = order;
    asked.top = top;
    std::vector<AssociationRule> result = rules;
    asked.arrange(result);
    std::vector<int> positions;
    for (const AssociationRule& rule : result) {
      for (int i = 0; i < 5; ++i) {
        const AssociationRule& original = rules[static_cast<std::size_t>(i)];
        if (rule.getAntecedent() == original.getAntecedent() &&
            rule.getConsequent() == original.getConsequent()) {
          positions.push_back(i);
        }
      }
    }
    return positions;
  };
  EXPECT_THAT(arranged(RuleQuery::Order::kConfidence, -1), ElementsAre(3, 4, 0, 2, 1));
  EXPECT_THAT(arranged(RuleQuery::Order::kSupport, -1), ElementsAre(1, 3, 4, 0, 2));
  // After lift and confidence the antecedent decides, whatever the support.
  EXPECT_THAT(arranged(RuleQuery::Order::kLift, -1), ElementsAre(1, 4, 3, 0, 2));
  EXPECT_THAT(arranged(RuleQuery::Order::kSupport, 2), ElementsAre(1, 3));
  EXPECT_TRUE(arranged(RuleQuery::Order::kSupport, 0).empty());
}

}  // namespace
}  // namespace korassoc::cli
