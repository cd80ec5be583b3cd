#include "OrvaTestSupport.h"
#include "model/OrvaCCFGroup.h"

// What the reader leaves in the model when it meets a fault.
TEST(Parser, KeepsWhatItReadBeforeAFault) {
  OrvaTestEngine engine;
  EXPECT_EQ(engine.Load(R"(<define-gate name="g">
                              <and><basic-event name="a"/><event name="b"/><xor/><event name="c"/></and>
                            </define-gate>
                            <define-gate name="later"><or/></define-gate>)"),
            1);
  EXPECT_EQ(engine.GetEvent("g")->GetType(), OrvaEvent::GATE);
  EXPECT_EQ(engine.GetEvent("g")->GetDefinition(), nullptr);
  EXPECT_EQ(engine.GetEvent("a")->GetType(), OrvaEvent::BASIC_EVENT);
  EXPECT_EQ(engine.GetEvent("b")->GetType(), OrvaEvent::UNSPECIFIED_EVENT);
  EXPECT_EQ(engine.GetEvent("c"), nullptr);
  EXPECT_EQ(engine.GetEvent("later"), nullptr);
  // Nothing of the faulty formula holds the events that it referenced.
  EXPECT_EQ(engine.GetEvent("a")->GetNumberOfOccurrences(), 0);

  EXPECT_EQ(engine.Load(R"(<define-CCF-group name="G" model="MGL">
                              <members><event name="b"/><event name="d"/></members>
                            </define-CCF-group>)"),
            1);
  EXPECT_EQ(engine.GetModel()->LookForCCFGroup("G"), nullptr);
  for (const char* member : {"b", "d"}) {
    EXPECT_EQ(engine.GetEvent(member)->GetType(), OrvaEvent::BASIC_EVENT);
    EXPECT_EQ(engine.GetEvent(member)->GetCCFGroup(), nullptr);
  }
}
