#include <memory>

#include "OrvaTestSupport.h"
#include "model/OrvaCCFGroup.h"
#include "model/OrvaGate.h"

// What whole runs can't show of the reader: steps that no model file reaches, and what it leaves in
// the model.
class OrvaParserTest : public testing::Test {
 protected:
  std::unique_ptr<OrvaGate> ReadFormula(const LumoXMLNode* node) {
    return std::unique_ptr<OrvaGate>(Parser()->_DownloadGate(_error, node, Model()));
  }
  void ReadCCFGroup(const LumoXMLNode* node) {
    Parser()->_DownloadCCFGroupDefinition(_error, node, Model());
  }
  OrvaParser* Parser() { return _engine->GetParser(); }
  OrvaModel* Model() { return _engine.GetModel(); }

  OrvaTestEngine _engine;
  int _error = 0;
};

// Every place where a formula may stand, a group may stand or a house event has its value excludes
// these, and the XML reader never misses a ">".
TEST_F(OrvaParserTest, SaysWhatNoFileCanMakeItSay) {
  const std::unique_ptr<LumoXMLNode> element(LumoXMLNode::NewNode("xor"));
  element->SetLineNumber(7);
  EXPECT_EQ(ReadFormula(element.get()), nullptr);
  ReadCCFGroup(element.get());
  EXPECT_EQ(_error, 1);
  const std::string echo = "ERROR [line 7]:\n<xor />\n\n";
  EXPECT_EQ(_engine.GetErrors(),
            echo + "Ill formed gate\n" + echo + "Incorrect CCF group definition\n");

  OrvaTestEngine other;
  OrvaModel* model = other.GetModel();
  OrvaEvent* house = model->AddEvent("h", OrvaEvent::HOUSE_EVENT);
  house->SetDefinition(OrvaGate::NewConstant(model, true));
  house->SetType(OrvaEvent::HOUSE_EVENT);
  EXPECT_EQ(other.Load(R"(<define-house-event name="h"/>)"), 1);
  other->GetParser()->RaiseError(1009, nullptr);
  EXPECT_EQ(other.GetErrors(),
            "ERROR [line 3]:\n<define-house-event name=\"h\" />\n\n"
            "House Event h is already defined.\n"
            "ERROR :\nA '>' was expected\n\n");
}

TEST_F(OrvaParserTest, KeepsWhatItReadBeforeAFault) {
  EXPECT_EQ(_engine.Load(R"(<define-gate name="g">
                              <and><basic-event name="a"/><event name="b"/><xor/><event name="c"/></and>
                            </define-gate>
                            <define-gate name="later"><or/></define-gate>)"),
            1);
  EXPECT_EQ(_engine.GetEvent("g")->GetType(), OrvaEvent::GATE);
  EXPECT_EQ(_engine.GetEvent("g")->GetDefinition(), nullptr);
  EXPECT_EQ(_engine.GetEvent("a")->GetType(), OrvaEvent::BASIC_EVENT);
  EXPECT_EQ(_engine.GetEvent("b")->GetType(), OrvaEvent::UNSPECIFIED_EVENT);
  EXPECT_EQ(_engine.GetEvent("c"), nullptr);
  EXPECT_EQ(_engine.GetEvent("later"), nullptr);
  // Nothing of the faulty formula holds the events that it referenced.
  EXPECT_EQ(_engine.GetEvent("a")->GetNumberOfOccurrences(), 0);

  EXPECT_EQ(_engine.Load(R"(<define-CCF-group name="G" model="MGL">
                              <members><event name="b"/><event name="d"/></members>
                            </define-CCF-group>)"),
            1);
  EXPECT_EQ(Model()->LookForCCFGroup("G"), nullptr);
  for (const char* member : {"b", "d"}) {
    EXPECT_EQ(_engine.GetEvent(member)->GetType(), OrvaEvent::BASIC_EVENT);
    EXPECT_EQ(_engine.GetEvent(member)->GetCCFGroup(), nullptr);
  }
}
