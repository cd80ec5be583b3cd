// Checks of a loaded model: what is reported, and in which order.

#include "OrvaTestSupport.h"
#include "model/OrvaChecker.h"
#include "model/OrvaGate.h"

namespace {

using Check = void (OrvaChecker::*)(int& error, const OrvaModel* model);

// What a check says, without the heads of the messages; "!" in front when it sets the error.
std::string Report(OrvaTestEngine& engine, Check check) {
  const std::size_t before = engine.GetErrors().size();
  int error = 0;
  (engine->GetChecker()->*check)(error, engine.GetModel());
  std::string report = engine.GetErrors().substr(before);
  const std::string head = "ERROR :\n";
  for (std::size_t at; (at = report.find(head)) != std::string::npos;)
    report.erase(at, head.size());
  int former = 1;
  (engine->GetChecker()->*check)(former, engine.GetModel());
  EXPECT_EQ(former, 1);  // never reset
  return (error == 1 ? "!" : "") + report;
}

TEST(Checker, UndefinedThingsAreAllReportedInNameOrder) {
  OrvaTestEngine engine;
  ASSERT_EQ(engine.Load("<define-gate name=\"top\"><or><event name=\"u\"/><gate name=\"g\"/>"
                        "<house-event name=\"h\"/><basic-event name=\"b\"/>"
                        "<basic-event name=\"ok\"/></or></define-gate>"
                        "<define-basic-event name=\"ok\"><parameter name=\"q\"/>"
                        "</define-basic-event>"
                        "<define-parameter name=\"r\"><parameter name=\"p\"/></define-parameter>"),
            0);
  engine.GetModel()->AddEvent("a", OrvaEvent::UNSPECIFIED_EVENT);
  engine.GetModel()->AddEvent("z", OrvaEvent::GATE);
  const std::string gates = "Undefined gate g\n\nUndefined gate z\n\n";
  const std::string basicEvents =
      "Undefined basic event a\n\nUndefined basic event b\n\nUndefined basic event u\n\n";
  const std::string houseEvents = "Undefined house event h\n\n";
  // The message speaks of an event, as defined.
  const std::string parameters =
      "Event with no specified type p\n\nEvent with no specified type q\n\n";
  EXPECT_EQ(Report(engine, &OrvaChecker::CheckGateDefinitions), "!" + gates);
  EXPECT_EQ(Report(engine, &OrvaChecker::CheckBasicEventDefinitions), "!" + basicEvents);
  EXPECT_EQ(Report(engine, &OrvaChecker::CheckHouseEventDefinitions), "!" + houseEvents);
  EXPECT_EQ(Report(engine, &OrvaChecker::CheckParameterDefinitions), "!" + parameters);
  EXPECT_EQ(Report(engine, &OrvaChecker::CheckNormalForm), "");
  EXPECT_EQ(Report(engine, &OrvaChecker::CheckEventDefinitions),
            "!Undefined event a\n\nUndefined basic event b\n\nUndefined gate g\n\n"
            "Undefined house event h\n\nUndefined event u\n\nUndefined gate z\n\n");
  engine.GetEvent("z")->SetDefinition(OrvaGate::NewConstant(engine.GetModel(), true));
  EXPECT_EQ(Report(engine, &OrvaChecker::CheckModel),
            "!Undefined gate g\n\n" + basicEvents + houseEvents + parameters +
                "The current version handles flat formulas only (z)\n\n");
  // Completion leaves the constants of the gates as the only fault.
  engine.GetModel()->Complete();
  EXPECT_EQ(Report(engine, &OrvaChecker::CheckEventDefinitions), "");
  EXPECT_EQ(Report(engine, &OrvaChecker::CheckModel),
            "!The current version handles flat formulas only (g)\n\n"
            "The current version handles flat formulas only (h)\n\n"
            "The current version handles flat formulas only (z)\n\n");
}

TEST(Checker, OneEventIsReferencedByNothing) {
  OrvaTestEngine engine;
  EXPECT_EQ(Report(engine, &OrvaChecker::CheckTopEventUniqueness), "!No top event\n\n");
  engine.Load("<define-gate name=\"top\"><not><basic-event name=\"a\"/></not></define-gate>");
  EXPECT_EQ(Report(engine, &OrvaChecker::CheckTopEventUniqueness), "");
  // An unused event counts, whatever its type.
  engine.Load(
      "<define-basic-event name=\"unused\"><float value=\"0\"/></define-basic-event>"
      "<define-house-event name=\"house\"/>");
  EXPECT_EQ(Report(engine, &OrvaChecker::CheckTopEventUniqueness),
            "!Multiple top events:\nhouse\ntop\nunused\n");
  // A loop has no top.
  OrvaTestEngine loop;
  loop.Load(
      "<define-gate name=\"f\"><gate name=\"g\"/></define-gate>"
      "<define-gate name=\"g\"><gate name=\"f\"/></define-gate>");
  EXPECT_EQ(Report(loop, &OrvaChecker::CheckTopEventUniqueness), "!No top event\n\n");
}

TEST(Checker, FlatFormulas) {
  const std::string a = "<basic-event name=\"a\"/>", b = "<basic-event name=\"b\"/>";
  const std::string c = "<gate name=\"c\"/>", notC = "<not>" + c + "</not>";
  const struct {
    std::string formula;
    bool isFlat;
  } rows[] = {
      {a, true},
      {notC, true},
      {"<not>" + notC + "</not>", false},
      {"<and>" + a + notC + "</and>", true},
      {"<or>" + a + notC + "</or>", true},
      {"<or/>", true},
      {"<atleast min=\"2\">" + a + b + c + "</atleast>", true},
      {"<atleast min=\"2\">" + a + b + "<or>" + a + "</or></atleast>", false},
      {"<and>" + a + "<not><not>" + a + "</not></not></and>", false},
      {"<or>" + a + "<constant value=\"true\"/></or>", false},
      {"<nand>" + a + b + "</nand>", false},
      {"<nor>" + a + b + "</nor>", false},
      {"<atmost max=\"1\">" + a + b + "</atmost>", false},
      {"<cardinality min=\"1\" max=\"1\">" + a + b + "</cardinality>", false},
      {"<constant value=\"false\"/>", false},
  };
  for (const auto& row : rows) {
    OrvaTestEngine engine;
    ASSERT_EQ(engine.Load("<define-gate name=\"g\">" + row.formula + "</define-gate>"), 0)
        << row.formula << engine.GetErrors();
    EXPECT_EQ(Report(engine, &OrvaChecker::CheckNormalForm),
              row.isFlat ? "" : "!The current version handles flat formulas only (g)\n\n")
        << row.formula;
  }
}

}  // namespace
