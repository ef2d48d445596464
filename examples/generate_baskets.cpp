// Writes the example data: baskets of a grocery shop, one a line, item names separated by commas.
//
//   generate_baskets FILE [BASKETS [SEED]]      10,000 baskets and seed 2026 unless said otherwise
//
// A basket is made of two kinds of items:
//   - what the shopper came for: occasions (taco night, a birthday cake, the baby), each a list of items with
//     the chance of each; these are the associations that mining finds again;
//   - what was met on the way past the shelves: items that have nothing to do with one another, drawn by a
//     Zipf-like popularity, the r-th of kItems in proportion to 1 / (r + 4).
// All of it is integer arithmetic, so that the same seed gives the same bytes on every machine.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string_view>
#include <vector>

namespace {

// The shelves, most popular first.
// clang-format off
constexpr std::string_view kItems[] = {
    "whole milk", "bananas", "bread", "eggs", "tomatoes", "yogurt", "onions", "apples", "butter", "cheddar",
    "potatoes", "chicken breast", "lettuce", "ground beef", "carrots", "mineral water", "coffee",
    "orange juice", "rolls", "cucumbers", "bell peppers", "toilet paper", "rice", "spaghetti", "sugar",
    "garlic", "beer", "cola", "cereal", "ham", "grapes", "lemons", "chocolate bar", "cream cheese",
    "olive oil", "flour", "salami", "potato chips", "oranges", "tomato sauce", "ice cream", "frozen pizza",
    "mushrooms", "bacon", "avocados", "broccoli", "red wine", "strawberries", "cookies", "mayonnaise",
    "ketchup", "tea", "spinach", "parmesan", "sausages", "zucchini", "honey", "paper towels", "mustard",
    "strawberry jam", "sour cream", "mozzarella", "blueberries", "white wine", "salmon", "dish soap", "pears",
    "frozen peas", "celery", "crackers", "tuna", "peanut butter", "green beans", "limes", "basil", "oat milk",
    "detergent", "tortilla chips", "black beans", "whipping cream", "maple syrup", "shampoo", "toothpaste",
    "feta", "olives", "pickles", "vinegar", "popcorn", "salsa", "soy sauce", "ginger", "cat food", "brie",
    "taco shells", "canned corn", "dog food", "burger buns", "pancake mix", "diapers", "vanilla extract",
    "baking powder", "chicken broth", "coconut milk", "cilantro", "sponges", "baby wipes", "chocolate chips",
    "leeks", "fabric softener", "raspberries", "curry paste", "tissues", "charcoal", "baby food",
    "sparkling wine", "birthday candles", "cat litter", "dog treats", "nori", "sushi rice"};
// clang-format on
constexpr std::uint32_t kItemCount = sizeof kItems / sizeof kItems[0];

struct Part {
  std::string_view item;
  std::uint32_t perMille;  // how often the item is bought for the occasion
};

struct Occasion {
  std::uint32_t perMille;  // how often it brings a shopper in
  std::vector<Part> parts;
};

const std::vector<Occasion>& occasions() {
  static const std::vector<Occasion> all = {
      // breakfast, from the baker's and from the box
      {110, {{"rolls", 750}, {"butter", 600}, {"strawberry jam", 450}, {"coffee", 500}, {"eggs", 350}}},
      {90, {{"cereal", 850}, {"whole milk", 800}, {"bananas", 450}, {"blueberries", 250}}},
      {35, {{"pancake mix", 850}, {"maple syrup", 800}, {"bacon", 450}, {"eggs", 400}, {"butter", 300}}},
      // suppers
      {55,
       {{"taco shells", 900},
        {"ground beef", 700},
        {"salsa", 750},
        {"sour cream", 550},
        {"cheddar", 550},
        {"avocados", 450},
        {"limes", 300},
        {"black beans", 250}}},
      {95,
       {{"spaghetti", 900},
        {"tomato sauce", 750},
        {"parmesan", 550},
        {"ground beef", 350},
        {"basil", 300},
        {"red wine", 200}}},
      {45,
       {{"rice", 750},
        {"curry paste", 800},
        {"coconut milk", 800},
        {"chicken breast", 600},
        {"ginger", 350},
        {"cilantro", 350}}},
      {18, {{"sushi rice", 950}, {"nori", 900}, {"soy sauce", 600}, {"salmon", 600}, {"cucumbers", 400}}},
      {60, {{"carrots", 750}, {"celery", 600}, {"leeks", 500}, {"potatoes", 500}, {"chicken broth", 450}}},
      {70,
       {{"lettuce", 800},
        {"tomatoes", 700},
        {"cucumbers", 600},
        {"feta", 400},
        {"olives", 350},
        {"olive oil", 300},
        {"vinegar", 250}}},
      {45, {{"mozzarella", 850}, {"tomatoes", 750}, {"basil", 650}, {"olive oil", 350}}},
      {60,
       {{"burger buns", 650},
        {"sausages", 650},
        {"ground beef", 450},
        {"charcoal", 450},
        {"ketchup", 500},
        {"mustard", 450},
        {"beer", 500}}},
      // a film, and guests
      {55,
       {{"potato chips", 700}, {"cola", 600}, {"popcorn", 500}, {"frozen pizza", 450}, {"ice cream", 300}}},
      {30, {{"tortilla chips", 900}, {"salsa", 700}, {"avocados", 450}, {"limes", 400}, {"beer", 350}}},
      {40, {{"red wine", 700}, {"brie", 750}, {"crackers", 650}, {"grapes", 600}, {"olives", 350}}},
      // the oven
      {65,
       {{"flour", 850},
        {"sugar", 700},
        {"eggs", 650},
        {"butter", 600},
        {"baking powder", 550},
        {"vanilla extract", 450},
        {"chocolate chips", 350}}},
      {14,
       {{"birthday candles", 950},
        {"whipping cream", 650},
        {"strawberries", 600},
        {"sparkling wine", 400},
        {"sugar", 350}}},
      // the household
      {38, {{"diapers", 900}, {"baby wipes", 750}, {"baby food", 650}, {"beer", 180}}},
      {36, {{"cat food", 950}, {"cat litter", 550}}},
      {34, {{"dog food", 950}, {"dog treats", 550}}},
      {50,
       {{"detergent", 600},
        {"fabric softener", 400},
        {"dish soap", 450},
        {"sponges", 350},
        {"paper towels", 500},
        {"toilet paper", 550}}},
      {22,
       {{"tissues", 800},
        {"tea", 650},
        {"honey", 600},
        {"lemons", 550},
        {"ginger", 350},
        {"chicken broth", 350}}},
      // packed lunches
      {75,
       {{"bread", 800},
        {"ham", 600},
        {"cheddar", 450},
        {"mayonnaise", 350},
        {"pickles", 250},
        {"apples", 350}}},
      {40, {{"bread", 750}, {"peanut butter", 850}, {"strawberry jam", 700}, {"bananas", 300}}},
      {35,
       {{"spinach", 600},
        {"bananas", 650},
        {"yogurt", 500},
        {"oat milk", 450},
        {"blueberries", 450},
        {"raspberries", 300}}}};
  return all;
}

// SplitMix64 (Steele, Lea & Flood, OOPSLA 2014).
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}

  // A number from 0 to below - 1, each as likely as another but for one part in 2^32 / below.
  std::uint32_t below(std::uint32_t below) {
    state_ += 0x9E3779B97F4A7C15U;
    std::uint64_t z = state_;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9U;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBU;
    z ^= z >> 31;
    return static_cast<std::uint32_t>((z >> 32) * below >> 32);
  }
  bool chance(std::uint32_t perMille) { return below(1000) < perMille; }

 private:
  std::uint64_t state_;
};

// Draws items by popularity.
class Shelves {
 public:
  Shelves() {
    std::uint32_t total = 0;
    for (std::uint32_t rank = 1; rank <= kItemCount; ++rank) upTo_.push_back(total += 1'000'000 / (rank + 4));
  }
  std::string_view draw(Random& random) const {
    const auto found = std::upper_bound(upTo_.begin(), upTo_.end(), random.below(upTo_.back()));
    return kItems[found - upTo_.begin()];
  }

 private:
  std::vector<std::uint32_t> upTo_;  // sum of the weights up to each item
};

std::vector<std::string_view> makeBasket(Random& random, const Shelves& shelves) {
  std::vector<std::string_view> basket;
  const auto put = [&basket](std::string_view item) {
    if (std::find(basket.begin(), basket.end(), item) == basket.end()) basket.push_back(item);
  };
  for (const Occasion& occasion : occasions()) {
    if (!random.chance(occasion.perMille)) continue;
    for (const Part& part : occasion.parts) {
      if (random.chance(part.perMille)) put(part.item);
    }
  }
  do {
    put(shelves.draw(random));
  } while (random.chance(740));
  return basket;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || argc > 4) {
    std::cerr << "usage: generate_baskets FILE [BASKETS [SEED]]\n";
    return 2;
  }
  const unsigned long long baskets = argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 10'000;
  Random random(argc > 3 ? std::strtoull(argv[3], nullptr, 10) : 2026);
  const Shelves shelves;

  std::ofstream out(argv[1], std::ios::binary);  // binary: a line ends in one byte on every system
  for (unsigned long long i = 0; i < baskets; ++i) {
    const char* separator = "";
    for (const std::string_view item : makeBasket(random, shelves)) {
      out << separator << item;
      separator = ",";
    }
    out << '\n';
  }
  out.close();
  if (!out) {
    std::cerr << argv[1] << ": cannot be written\n";
    return 1;
  }
}
