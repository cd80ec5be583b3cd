// Diagrams that grow: tables that are made larger and collected, the way without a binary diagram
// where that one grows too large, and sets that are merged.

#include <algorithm>
#include <array>
#include <random>
#include <set>

#include "OrvaTestSupport.h"

namespace {

std::string GetOrders(OrvaTestEngine& engine, const std::string& attributes) {
  engine.MustRun("<build><minimal-cutsets top-event=\"g0\" " + attributes +
                 "/></build><print><orders top-event=\"g0\" " + attributes +
                 " output=\"orders.txt\"/></print>");
  return OrvaTestEngine::ReadFile("orders.txt");
}

std::string GetExactProbability(OrvaTestEngine& engine, const std::string& attributes) {
  engine.MustRun("<compute><probability top-event=\"g0\" approximation=\"exact\" " + attributes +
                 " output=\"exact.txt\"/></compute>");
  return OrvaTestEngine::ReadTable("exact.txt").back().back();
}

// An event in each field of an n by n grid; g0 is true when each row and each column has one. No
// row or column is a module.
std::string DefineGrid(int n, const std::string& probability) {
  std::string gates = "g0=and(";
  std::string lines;
  std::string events;
  for (int i = 0; i < n; ++i) {
    const std::string row = "r" + std::to_string(i), column = "c" + std::to_string(i);
    std::string fieldsOfRow, fieldsOfColumn;
    for (int j = 0; j < n; ++j) {
      const std::string comma = j == 0 ? "" : ",";
      fieldsOfRow += comma + "e" + std::to_string(n * i + j);
      fieldsOfColumn += comma + "e" + std::to_string(n * j + i);
      events += "#e" + std::to_string(n * i + j) + "=" + probability + ";";
    }
    gates += (i == 0 ? "" : ",") + row + "," + column;
    lines += row + "=or(" + fieldsOfRow + ");" + column + "=or(" + fieldsOfColumn + ");";
  }
  return gates + ");" + lines + events;
}

// The cutsets are the least sets of fields that cover all rows and columns: stars, each a row with
// columns of its own or a column with rows of its own. With s pairs, i rows with at least two
// columns and j columns with at least two rows there are 2n - i - j - s fields, in
//   n! / (i! s! b!) * n! / (j! s! a!) * s! * T(a, i) * T(b, j),  a = n - j - s, b = n - i - s
// ways, where T(m, k) is in how many ways m things go into k boxes, two or more into each.
TEST(Diagrams, Grid) {
  OrvaTestEngine engine;
  engine.Define(DefineGrid(6, "0.2"));
  const std::string expected =
      "order\t#MCS\n6\t720\n7\t21600\n8\t36900\n9\t4500\n10\t36\ntotal\t63756\n";
  EXPECT_EQ(GetOrders(engine, "handle=\"A\" algorithm=\"diagram\""), expected);
  // A limit that cuts nothing off, under which no binary diagram is made.
  EXPECT_EQ(GetOrders(engine, "handle=\"B\" algorithm=\"diagram\" maximum-order=\"36\""), expected);
  // The sum over j of (-1)^j C(n, j) q^(n j) (1 - q^(n - j))^n with q = 1 - p: j columns are empty
  // and no row is.
  EXPECT_EQ(GetExactProbability(engine, "handle=\"A\""), "0.0550564");
}

// So many nodes on the way that the dead ones are collected.
TEST(Diagrams, CutsetsOfALargerGrid) {
  OrvaTestEngine engine;
  engine.Define(DefineGrid(7, "0.2"));
  EXPECT_EQ(GetOrders(engine, "algorithm=\"diagram\" maximum-order=\"8\""),
            "order\t#MCS\n7\t5040\n8\t264600\ntotal\t269640\n");
}

TEST(Diagrams, ExactProbabilityOfALargerGrid) {
  OrvaTestEngine engine;
  engine.Define(DefineGrid(8, "0.2"));
  engine.MustRun("<build><minimal-cutsets top-event=\"g0\" maximum-order=\"0\"/></build>");
  EXPECT_EQ(GetExactProbability(engine, ""), "0.0848979");
}

// An or over different sets of three events each: all of them are the cutsets. The binary diagram
// is refused with as many nodes as are tried for cutsets.
TEST(Diagrams, CutsetsWithoutABinaryDiagram) {
  constexpr unsigned EVENTS = 60;
  constexpr std::size_t SETS = 150;
  std::mt19937 random(7);
  std::set<std::array<int, 3>> sets;
  while (sets.size() < SETS) {
    std::array<int, 3> set;
    for (int& event : set) event = static_cast<int>(random() % EVENTS);
    std::sort(set.begin(), set.end());
    if (set[0] < set[1] && set[1] < set[2]) sets.insert(set);
  }
  std::string model;
  std::string names;
  for (const auto& [a, b, c] : sets) {
    const std::string name = "g" + std::to_string(1 + std::count(names.begin(), names.end(), 'g'));
    names += (names.empty() ? "" : ",") + name;
    model += name + "=and(e" + std::to_string(a) + ",e" + std::to_string(b) + ",e" +
             std::to_string(c) + ");";
  }
  for (unsigned i = 0; i < EVENTS; ++i) model += "#e" + std::to_string(i) + "=0.01;";
  OrvaTestEngine engine;
  engine.Define("g0=or(" + names + ");" + model);
  EXPECT_EQ(GetOrders(engine, "algorithm=\"diagram\""), "order\t#MCS\n3\t150\ntotal\t150\n");
  EXPECT_EQ(engine.Run("<compute><probability top-event=\"g0\" approximation=\"exact\" "
                       "maximum-nodes=\"100000\"/></compute>"),
            1);
}

// What the search has found is an else-chain of 20,000 events; one cutset is new.
TEST(Diagrams, MergeIntoALongChain) {
  constexpr int N = 20000;
  std::string model = "g0=or(g1";
  std::string events = "#a=0.5;#b=0.5;";
  for (int i = 0; i < N; ++i) {
    model += ",e" + std::to_string(i);
    events += "#e" + std::to_string(i) + "=0.00001;";
  }
  OrvaTestEngine engine;
  engine.Define(model + ");g1=and(a,b);" + events);
  EXPECT_EQ(GetOrders(engine, "maximum-order=\"1\""), "order\t#MCS\n1\t20000\ntotal\t20000\n");
  EXPECT_EQ(GetOrders(engine, "algorithm=\"diagram\""),
            "order\t#MCS\n1\t20000\n2\t1\ntotal\t20001\n");
  engine.MustRun("<print><walk-statistics output=\"statistics.txt\"/></print>");
  EXPECT_NE(OrvaTestEngine::ReadFile("statistics.txt").find("#minimal-cutsets\t1\n"),
            std::string::npos);
}

}  // namespace
