#include "OrvaTestSupport.h"
#include "reader/OrvaChecker.h"

namespace {

// What the check of the normal form says of a gate g.
std::string ReportNormalForm(const std::string& formula) {
  OrvaTestEngine engine;
  engine.Define("g = " + formula);
  int error = 0, former = 1;
  engine->GetChecker()->CheckNormalForm(error, engine.GetModel());
  const std::string report = engine.GetErrors();
  EXPECT_EQ(error, report.empty() ? 0 : 1);
  engine->GetChecker()->CheckNormalForm(former, engine.GetModel());
  EXPECT_EQ(former, 1);  // never reset
  return report;
}

TEST(Checker, FlatFormulas) {
  for (const char* formula : {"a", "-c", "and(a,-c)", "or()", "atleast2(a,b,c)"}) {
    EXPECT_EQ(ReportNormalForm(formula), "") << formula;
  }
  for (const char* formula :
       {"not(-c)", "atleast2(a,b,or(a))", "and(a,not(-a))", "or(a,true)", "nand(a,b)", "nor(a,b)",
        "atmost1(a,b)", "cardinality1-1(a,b)", "false"}) {
    EXPECT_EQ(ReportNormalForm(formula),
              "ERROR :\nThe current version handles flat formulas only (g)\n\n")
        << formula;
  }
}

}  // namespace
