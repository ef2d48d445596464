// The names and signatures of itemsets, arrays and numeric helpers that hosts compile against.

#include <cstdint>
#include <fstream>
#include <iosfwd>
#include <set>
#include <string>
#include <type_traits>

#include "korassoc/korassoc.h"
#include "tests/interface/InterfaceTest.h"

namespace {

TEST(Interface, HasTheItemSet) {
  static_assert(!std::is_polymorphic_v<ItemSet>);
  static_assert(std::is_default_constructible_v<ItemSet> && std::is_copy_constructible_v<ItemSet>);
  static_assert(std::is_convertible_v<int, ItemSet>);
  static_assert(std::is_constructible_v<ItemSet, const ItemSet&, int>);
  static_assert(std::is_constructible_v<ItemSet, const OrderedArray&>);
  static_assert(std::is_constructible_v<ItemSet, const OrderedArray&, const OrderedArray&>);
  static_assert(std::is_constructible_v<ItemSet, const int*, int, const int*, int>);
  static_assert(std::is_constructible_v<ItemSet, const int*, int>);
  static_assert(std::is_constructible_v<ItemSet, const ItemSet&, const ItemSet&>);
  has<int (ItemSet::*)() const>(&ItemSet::length);
  has<int* (ItemSet::*)()>(&ItemSet::getTheArray);
  has<int (ItemSet::*)(int) const>(&ItemSet::getItemAt);
  has<int (ItemSet::*)() const>(&ItemSet::hashcode);
  has<ItemSet* (ItemSet::*)() const>(&ItemSet::getNext);
  has<ItemSet* (ItemSet::*)() const>(&ItemSet::getPrev);
  has<void (ItemSet::*)(ItemSet*)>(&ItemSet::setNext);
  has<void (ItemSet::*)(ItemSet*)>(&ItemSet::setPrev);
  has<void (ItemSet::*)(int)>(&ItemSet::addItem);
  has<bool (ItemSet::*)(int)>(&ItemSet::RemoveItem);
  has<void (ItemSet::*)()>(&ItemSet::clear);
  has<int (ItemSet::*)(int) const>(&ItemSet::getItemIndex);
  has<bool (ItemSet::*)(int) const>(&ItemSet::hasItem);
  has<ItemSet* (ItemSet::*)(int) const>(&ItemSet::omit);
  has<ItemSet* (ItemSet::*)(const ItemSet*) const>(&ItemSet::setUnion);
  has<ItemSet* (ItemSet::*)(const ItemSet*) const>(&ItemSet::intersect);
  has<bool (ItemSet::*)(const ItemSet*) const>(&ItemSet::hasOverlap);
  has<bool (ItemSet::*)(const OrderedArray&) const>(&ItemSet::hasOverlap);
  has<bool (ItemSet::*)(const ItemSet*) const>(&ItemSet::isSubsetOf);
  has<bool (ItemSet::*)(const ItemSet&) const>(&ItemSet::operator==);
  has<void (ItemSet::*)(const ItemSet&)>(&ItemSet::operator=);
  has<bool (*)(const ItemSet&, const ItemSet&)>(&operator<);
  has<void (ItemSet::*)(int)>(&ItemSet::updateItemSet);
  has<void (ItemSet::*)(int, int)>(&ItemSet::updateItemSet);
  has<void (ItemSet::*)(const OrderedArray&)>(&ItemSet::updateItemSet);
  has<void (ItemSet::*)(const int*, int)>(&ItemSet::updateItemSet);
  has<void (ItemSet::*)(const OrderedArray&, const OrderedArray&)>(&ItemSet::updateItemSet);
  has<void (ItemSet::*)(const int*, int, const int*, int)>(&ItemSet::updateItemSet);
  has<void (ItemSet::*)() const>(&ItemSet::display);
  has<void (ItemSet::*)(std::ostream&) const>(&ItemSet::Display);
  has<void (ItemSet::*)() const>(&ItemSet::displayAll);
  has<std::uint64_t (ItemSet::*)(std::fstream&) const>(&ItemSet::writeObject);
  has<std::uint64_t (ItemSet::*)(std::fstream&)>(&ItemSet::readObject);
  has<std::uint64_t (ItemSet::*)(std::ostream&, int) const>(&ItemSet::writeObjectXML);
  has<std::uint64_t (ItemSet::*)(std::ifstream&)>(&ItemSet::readObjectXML);
  const std::set<ItemSet> ordered = {ItemSet(2), ItemSet(1)};
  EXPECT_EQ(ordered.begin()->getItemAt(0), 1);
}

TEST(Interface, HasTheArrays) {
  static_assert(std::is_base_of_v<SimpleArray, OrderedArray>);
  static_assert(std::is_constructible_v<SimpleArray, int, int>);
  static_assert(std::is_constructible_v<OrderedArray, int, int>);
  static_assert(sizeof(OrderedArray) == sizeof(SimpleArray), "it adds no fields");
  static_assert(std::is_same_v<decltype(SimpleArray::data), int*>);
  static_assert(std::is_same_v<decltype(SimpleArray::count), int>);
  static_assert(std::is_same_v<decltype(SimpleArray::capacity), int>);
  static_assert(std::is_same_v<decltype(SimpleArray::increment), int>);
  has<int (SimpleArray::*)(const int&)>(&SimpleArray::Add);
  has<int (SimpleArray::*)(int)>(&SimpleArray::RemoveAt);
  has<bool (SimpleArray::*)(const int&)>(&SimpleArray::Remove);
  has<int (SimpleArray::*)()>(&SimpleArray::Compact);
  has<void (SimpleArray::*)(int)>(&SimpleArray::SetCapacity);
  has<void (SimpleArray::*)()>(&SimpleArray::Clear);
  has<void (SimpleArray::*)() const>(&SimpleArray::Display);
  inConsecutiveSlots(2, &SimpleArray::Add, &SimpleArray::RemoveAt, &SimpleArray::Remove,
                     &SimpleArray::Compact, &SimpleArray::SetCapacity, &SimpleArray::Clear);
}

TEST(Interface, HasTheNumericHelpers) {
  using KorAssocMath::KorPower;
  static_assert(KorMV::gMissingValue < 0);
  has<double (*)()>(&KorMV::Missing);
  has<bool (*)(double)>(&KorMV::IsMissing);
  static_assert(std::is_convertible_v<KorPower::PowerStatus, int>, "the enumeration is unscoped");
  static_assert(KorPower::PowerOK == 0 && KorPower::PowerUnderflow == 1 && KorPower::PowerOverflow == 2);
  static_assert(KorPower::PowerNegativeBaseOverflow == 3 && KorPower::PowerNegativeBaseBadExponent == 4);
  static_assert(KorPower::PowerNegativeBaseZeroExponent == 5);
  static_assert(KorPower::PowerZeroBaseNegativeExponent == 6 && KorPower::PowerZeroBaseZeroExponent == 7);
  has<double (*)()>(&KorPower::MaxExp);
  has<double (*)()>(&KorPower::MinExp);
  has<int (*)()>(&KorPower::MaxInt);
  has<double (*)()>(&KorPower::MEpsilon);
  has<bool (*)(double)>(&KorPower::ExpOverflow);
  has<bool (*)(double)>(&KorPower::ExpUnderflow);
  has<bool (*)(double)>(&KorPower::IsInteger);
  has<bool (*)(double)>(&KorPower::IsEvenInteger);
  has<bool (*)(double)>(&KorPower::IsOddInteger);
  has<bool (*)(double, double, double)>(&KorPower::AlmostEqual);
  has<bool (*)(double, double)>(&KorPower::IsOneOverEvenInteger);
  has<bool (*)(double, double)>(&KorPower::IsOneOverOddInteger);
  has<KorPower::PowerStatus (*)(double, double&)>(&KorPower::Exponent);
  has<KorPower::PowerStatus (*)(double, double, double&)>(&KorPower::Power);
  has<double (*)(double, double)>(&KorPower::Multiply);
}

}  // namespace
