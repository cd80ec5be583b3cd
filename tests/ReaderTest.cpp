#include <memory>

#include "OrvaTestSupport.h"
#include "model/OrvaCCFGroup.h"
#include "model/OrvaGate.h"
#include "model/OrvaParameter.h"
#include "model/OrvaProbabilityDistribution.h"

// What whole runs can't show of the reader: its way to steps that no model file reaches, and what
// it leaves in the model.
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
  // The constant that is the expression of an event; -1 without one.
  double Expression(const char* name) {
    const OrvaProbabilityDistribution* expression =
        _engine.GetEvent(name)->GetProbabilityDistribution();
    return expression == nullptr ? -1.0 : expression->GetValueAsDouble();
  }

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

  EXPECT_EQ(_engine.Load(R"(<define-basic-event name="two"><pi/><pi/></define-basic-event>)"), 1);
  EXPECT_EQ(_engine.GetEvent("two")->GetType(), OrvaEvent::BASIC_EVENT);
  EXPECT_EQ(Expression("two"), -1.0);

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

TEST_F(OrvaParserTest, FillsTheModel) {
  EXPECT_STREQ(Model()->GetFormat(), "open-psa");
  const std::string text = R"(<?xml version="1.0"?>
<riskspectrum:opsa-mef>
  <define-gate name="top"><label>the top</label><or><gate name="g"/><event name="e"/></or></define-gate>
  <define-gate name="g"><and><house-event name="h"/><event name="e"/></and></define-gate>
  <define-basic-event name="e" riskspectrum:model="probability"><float value="0.5"/></define-basic-event>
  <define-house-event name="h"><constant value="true"/></define-house-event>
  <define-parameter name="p" riskspectrum:type="FailureRate" unit="hours-1"><label>a rate</label><pi/></define-parameter>
  <define-CCF-group name="G" model="beta-factor">
    <label>a group</label>
    <members><event name="m1"/><basic-event name="m2"/><event name="m3"/></members>
    <factor><float value="0.25"/></factor>
  </define-CCF-group>
</riskspectrum:opsa-mef>
)";
  Parser()->DownloadModel(_error, OrvaTextFile(text).Get(), Model());
  EXPECT_EQ(_error, 0) << _engine.GetErrors();
  EXPECT_STREQ(Model()->GetFormat(), "riskspectrum:opsa-mef");
  EXPECT_STREQ(_engine.GetEvent("top")->GetAttributeAsString("label", ""), "the top");
  // One event from its reference on; a house event's value makes it a gate.
  EXPECT_EQ(Model()->GetNumberOfEvents(), 7);
  EXPECT_EQ(_engine.GetEvent("g")->GetDefinition()->GetType(), OrvaGate::AND);
  EXPECT_EQ(_engine.GetEvent("h")->GetType(), OrvaEvent::GATE);
  EXPECT_EQ(_engine.GetEvent("e")->GetType(), OrvaEvent::BASIC_EVENT);
  EXPECT_EQ(_engine.GetEvent("e")->GetNumberOfOccurrences(), 2);
  EXPECT_STREQ(_engine.GetEvent("e")->GetAttributeAsString("riskspectrum:model", ""),
               "probability");
  const OrvaParameter* parameter = Model()->LookForParameter("p");
  EXPECT_STREQ(parameter->GetAttributeAsString("label", ""), "a rate");
  EXPECT_STREQ(parameter->GetAttributeAsString("riskspectrum:type", ""), "FailureRate");
  EXPECT_STREQ(parameter->GetAttributeAsString("unit", ""), "hours-1");
  // The factor without a level is the last one's.
  const OrvaCCFGroup* group = Model()->LookForCCFGroup("G");
  EXPECT_STREQ(group->GetAttributeAsString("label", ""), "a group");
  EXPECT_EQ(group->GetFactor(0), nullptr);
  EXPECT_EQ(group->GetFactor(3)->GetValueAsDouble(), 0.25);
  EXPECT_EQ(_engine.GetEvent("m2")->GetCCFGroup(), group);
}

TEST_F(OrvaParserTest, GivesADefaultToBasicEventsWithoutExpression) {
  ASSERT_EQ(_engine.Load(R"(<define-gate name="g"><or><event name="u"/><basic-event name="b"/>
                              <house-event name="h"/><event name="e"/></or></define-gate>
                            <define-basic-event name="e"><float value="0.5"/></define-basic-event>)"),
            0);
  const std::unique_ptr<LumoXMLNode> ill(LumoXMLNode::NewNode("or-so"));
  Parser()->DownloadDefaultProbabilityDistributionOfBasicEvents(_error, ill.get(), Model());
  EXPECT_EQ(_error, 1);
  EXPECT_EQ(_engine.GetErrors(), "ERROR [line 0]:\n<or-so />\n\nNot a probability distribution\n");

  _error = 0;
  const std::unique_ptr<LumoXMLNode> node(LumoXMLNode::NewNode("float"));
  node->AddAttribute("value", "0.125");
  Parser()->DownloadDefaultProbabilityDistributionOfBasicEvents(_error, node.get(), Model());
  EXPECT_EQ(_error, 0);
  EXPECT_EQ(_engine.GetEvent("u")->GetType(), OrvaEvent::BASIC_EVENT);
  EXPECT_EQ(_engine.GetEvent("h")->GetType(), OrvaEvent::HOUSE_EVENT);
  EXPECT_EQ(Expression("u"), 0.125);
  EXPECT_EQ(Expression("b"), 0.125);
  EXPECT_EQ(Expression("e"), 0.5);
  EXPECT_EQ(Expression("h"), -1.0);
  EXPECT_NE(_engine.GetEvent("u")->GetProbabilityDistribution(),
            _engine.GetEvent("b")->GetProbabilityDistribution());
}
