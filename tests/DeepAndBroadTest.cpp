// Models that are deep or broad: what is done to them takes neither the stack nor a time that
// grows with the square of their size.

#include <algorithm>
#include <cmath>
#include <set>

#include "OrvaTestSupport.h"
#include "model/OrvaGate.h"
#include "store/OrvaMCSManager.h"
#include "system/OrvaRewriter.h"

namespace {

// "x2, x3, x4" for the numbers from 2 to 4.
std::string List(char kind, int first, int last) {
  std::string list;
  for (int i = first; i <= last; ++i)
    list += (list.empty() ? "" : ",") + (kind + std::to_string(i));
  return list;
}
std::string Define(int i, const std::string& kind, const std::string& children) {
  return "g" + std::to_string(i) + "=" + kind + "(" + children + ");";
}
std::string DefineEvents(int n, const std::string& probability) {
  std::string definitions;
  for (int i = 0; i < n; ++i) definitions += "#e" + std::to_string(i) + "=" + probability + ";";
  return definitions;
}

class DeepAndBroad : public testing::Test {
 protected:
  // Builds the cutsets of g0 and writes every table about them.
  void Build(const std::string& model, const std::string& limits = "") {
    engine.Define(model);
    ASSERT_EQ(engine.Run("<set><option name=\"top-event\" value=\"g0\"/></set>"
                         "<build><minimal-cutsets " +
                         limits +
                         "/></build>"
                         "<print><orders output=\"orders.txt\"/>"
                         "<minimal-cutsets output=\"cutsets.txt\"/>"
                         "<numbers-of-occurrences output=\"occurrences.txt\"/>"
                         "<system handle=\"system\" output=\"system.txt\"/></print>"
                         "<compute><probability output=\"probability.txt\"/>"
                         "<importance-factors output=\"importance.txt\"/>"
                         "<sensitivity number-of-tries=\"2\" output=\"sample.txt\"/></compute>"),
              0)
        << engine.GetErrors();
  }
  // Diagrams find as many cutsets of each order, and the same sum.
  void ExpectTheSameByDiagrams(const std::string& limits = "") {
    engine.MustRun("<build><minimal-cutsets algorithm=\"diagram\" handle=\"D\" " + limits +
                   "/></build><print><orders handle=\"D\" output=\"D-orders.txt\"/></print>"
                   "<compute><probability handle=\"D\" output=\"D-probability.txt\"/></compute>");
    EXPECT_EQ(OrvaTestEngine::ReadFile("D-orders.txt"), OrvaTestEngine::ReadFile("orders.txt"));
    EXPECT_EQ(GetRow("D-probability.txt", "g0"), GetRow("probability.txt", "g0"));
  }
  // A row of a table whose first field is that name.
  static std::string GetRow(const std::string& file, const std::string& name) {
    const std::string text = "\n" + OrvaTestEngine::ReadFile(file);
    const std::size_t start = text.find("\n" + name + "\t");
    return start == std::string::npos
               ? ""
               : text.substr(start + 1, text.find('\n', start + 1) - start - 1);
  }

  OrvaTestEngine engine;
};

TEST_F(DeepAndBroad, OneOrOfManyEvents) {
  constexpr int N = 20000;
  Build(Define(0, "or", List('e', 0, N - 1)) + DefineEvents(N, "0.00001"));
  EXPECT_EQ(GetRow("orders.txt", "1"), "1\t20000");
  EXPECT_EQ(GetRow("probability.txt", "g0"), "g0\t0\t0.2");
  EXPECT_EQ(GetRow("cutsets.txt", "20000").substr(0, 18), "20000\t1e-05\t5e-05\t");
  ExpectTheSameByDiagrams();
  engine.MustRun("<compute><probability approximation=\"exact\" output=\"exact.txt\"/></compute>");
  EXPECT_EQ(GetRow("exact.txt", "g0"), "g0\t0\t" + OrvaPrint(1.0 - std::pow(0.99999, N)));
}

TEST_F(DeepAndBroad, OneAndOfManyEvents) {
  constexpr int N = 20000;
  Build(Define(0, "and", List('e', 0, N - 1)) + DefineEvents(N, "0.9999"));
  EXPECT_EQ(GetRow("orders.txt", "20000"), "20000\t1");
  char expected[32];
  std::snprintf(expected, sizeof expected, "g0\t0\t%.6g", std::pow(0.9999, N));
  EXPECT_EQ(GetRow("probability.txt", "g0"), expected);
  ExpectTheSameByDiagrams();
}

// g0 = e0 or g1, g1 = e1 and g2, g2 = e2 or g3 ...: e0, e1 e2, e1 e3 e4 and so on.
TEST_F(DeepAndBroad, ChainOfGates) {
  constexpr int N = 20000;
  std::string model;
  for (int i = 0; i + 1 < N; ++i) {
    model += Define(i, i % 2 == 0 ? "or" : "and", List('e', i, i) + "," + List('g', i + 1, i + 1));
  }
  Build(model + Define(N - 1, "or", List('e', N - 1, N)) + DefineEvents(N + 1, "0.5"),
        "maximum-order=\"4\"");
  EXPECT_EQ(OrvaTestEngine::ReadFile("orders.txt"),
            "order\t#MCS\n1\t1\n2\t1\n3\t1\n4\t1\ntotal\t4\n");
  EXPECT_EQ(GetRow("probability.txt", "g0"), "g0\t0\t0.9375");
  ExpectTheSameByDiagrams("maximum-order=\"4\"");
}

// g0 = 2 of (e0, e1, g1), g1 = 2 of (e2, e3, g2) ...: {e0, e1}; e0 or e1 with {e2, e3}; and so on,
// 2^i cutsets of order i + 2. The probability of g(i) is p(i) = 0.01 + 0.18 p(i + 1), which tends
// to 0.01 / 0.82.
TEST_F(DeepAndBroad, NestedModulesByDiagrams) {
  constexpr int N = 2000;
  std::string model;
  for (int i = 0; i + 1 < N; ++i) {
    model += Define(i, "atleast2", List('e', 2 * i, 2 * i + 1) + "," + List('g', i + 1, i + 1));
  }
  engine.Define(model + Define(N - 1, "or", List('e', 2 * N - 2, 2 * N - 1)) +
                DefineEvents(2 * N, "0.1"));
  engine.MustRun(
      "<set><option name=\"top-event\" value=\"g0\"/></set>"
      "<build><minimal-cutsets algorithm=\"diagram\" maximum-order=\"6\"/></build>"
      "<print><orders output=\"orders.txt\"/></print>"
      "<compute><probability approximation=\"exact\" output=\"exact.txt\"/></compute>");
  EXPECT_EQ(OrvaTestEngine::ReadFile("orders.txt"),
            "order\t#MCS\n2\t1\n3\t2\n4\t4\n5\t8\n6\t16\ntotal\t31\n");
  EXPECT_EQ(GetRow("exact.txt", "g0"), "g0\t0\t0.0121951");
}

// A chain of aliases and a chain of parameters, to the value at their ends.
TEST_F(DeepAndBroad, ChainsOfReferences) {
  constexpr int N = 20000;
  std::string model;
  for (int i = 0; i < N; ++i) {
    const std::string name = std::to_string(i), next = std::to_string(i + 1);
    model += "g" + name + "=g" + next + ";$p" + name + "=mul(p" + next + ",1.0);";
  }
  const std::string end = std::to_string(N);
  engine.Define(model + Define(N, "or", "e0,e1") + "$p" + end +
                "=exponential(0.25,time); #e0=p0; #e1=0.0");
  // The top event is an alias; its cutsets are those of the gate that all of them mean.
  ASSERT_EQ(engine.Run("<build><minimal-cutsets top-event=\"g" + end +
                       "\"/></build><compute><failure-intensity last-date=\"0\" top-event=\"g" +
                       end + "\" output=\"intensity.txt\"/></compute>"),
            0)
      << engine.GetErrors();
  // The rate 0.25 at the end of the chain; the event is up at date 0.
  const OrvaEvent* event = engine.GetEvent("e0");
  EXPECT_EQ(event->GetUnconditionalFailureIntensity(), 0.25);
  ASSERT_EQ(engine.Run("<normalize top-event=\"g0\"/>"), 0);
  EXPECT_EQ(engine.GetEvent("g0")->GetDefinition()->GetReferencedEvent(),
            engine.GetEvent(("g" + end).c_str()));
}

// (e0 ... e99) and (e50 ... e149) and (2 of e90 ... e129 or e0): long formulas that share events,
// looked through again and again. By brute force over the choices.
TEST_F(DeepAndBroad, LongFormulasThatShareEvents) {
  Build(Define(0, "and", "g1,g2") + Define(1, "or", List('e', 0, 99)) +
        Define(2, "or", List('e', 50, 149)) + DefineEvents(150, "0.5"));
  std::set<std::string> expected;
  for (int i = 50; i < 100; ++i) expected.insert("e" + std::to_string(i));
  for (int i = 0; i < 50; ++i) {
    for (int j = 100; j < 150; ++j) {
      // In alphabetical order.
      const std::string a = "e" + std::to_string(i);
      const std::string b = "e" + std::to_string(j);
      expected.insert(std::min(a, b) + "\t" + std::max(a, b));
    }
  }
  std::istringstream lines(OrvaTestEngine::ReadFile("cutsets.txt"));
  std::set<std::string> found;
  for (std::string line; std::getline(lines, line);) {
    std::size_t start = 0;  // behind rank, probability and contribution
    for (int field = 0; field < 3; ++field) start = line.find('\t', start) + 1;
    EXPECT_TRUE(found.insert(line.substr(start)).second) << line;
  }
  EXPECT_EQ(found, expected);
}

// Every gate of a chain of "or" gates holds the events of all gates below it.
TEST_F(DeepAndBroad, FormulasThatGrowTooLarge) {
  constexpr int N = 50;  // 2 + 3 + ... + 50 copies
  std::string model;
  for (int i = 0; i + 1 < N; ++i) {
    model += Define(i, "or", List('e', i, i) + "," + List('g', i + 1, i + 1));
  }
  engine.Define(model + Define(N - 1, "or", List('e', N - 1, N)));
  engine->GetRewriter()->SetMaximumNumberOfCopies(1273);
  EXPECT_EQ(engine.Run("<build><minimal-cutsets top-event=\"g0\"/></build>"), 1);
  EXPECT_EQ(engine.GetErrors(), "ERROR :\nThe formulas below g0 grow too large\n\n");
}

// 20 upper gates find the same 21 events below each of 20 lower gates, which share 20 of them: 820
// copies are made, 8,800 children looked at.
TEST_F(DeepAndBroad, FormulasThatTakeTooLong) {
  constexpr int N = 20;
  const std::string uppers = List('g', 1, N), lowers = List('g', N + 1, 2 * N);
  std::string model = Define(2 * N + 1, "or", List('e', 1, N));
  for (int i = 1; i <= N; ++i) {
    model += Define(i, "or", lowers) + Define(N + i, "or", "e0,g" + std::to_string(2 * N + 1));
  }
  for (const int maximum : {880, 879}) {
    OrvaTestEngine fresh;
    fresh.Define(model + Define(0, "and", uppers));
    fresh->GetRewriter()->SetMaximumNumberOfCopies(maximum);
    EXPECT_EQ(fresh.Run("<normalize top-event=\"g0\"/>"), maximum == 880 ? 0 : 1);
  }
}

TEST_F(DeepAndBroad, ManyScripts) {
  constexpr int N = OrvaInterpreter::MAXIMUM_NUMBER_OF_SCRIPTS;
  std::ofstream("empty.xml") << "<?xml version=\"1.0\"?><orva></orva>";
  std::string commands;
  for (int i = 0; i < N; ++i) commands += "<script input=\"empty.xml\"/>";
  EXPECT_EQ(engine.Run("<load>" + commands + "</load>"), 0);
  std::string errors;
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(engine.Run("<load><script input=\"empty.xml\"/></load>"), 1);
    errors += "ERROR :\nToo many scripts are loaded: empty.xml\n\n";
    EXPECT_EQ(engine.GetErrors(), errors);
  }
}

TEST_F(DeepAndBroad, MoreBasicEventsThanTheStoreHasIndices) {
  engine.Define(Define(0, "or", List('e', 0, 1)) + DefineEvents(2, "0.5"));
  OrvaMCSManager* manager = engine->GetMCSManager();
  manager->SetSizeOfEntryTable(OrvaMCSNode::MAXIMUM_INDEX + 1);
  manager->SetProbability(OrvaMCSNode::MAXIMUM_INDEX - 1, 0.5);
  EXPECT_EQ(engine.Run("<build><minimal-cutsets top-event=\"g0\"/></build>"), 1);
  EXPECT_EQ(engine.GetErrors(), "ERROR :\nToo many basic events in minimal cutsets\n\n");
}

}  // namespace
