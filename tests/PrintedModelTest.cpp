// Whole models printed and read back: those below printed-models, which were drawn at random with
// every kind of element, those of the whole runs, and those of the examples.

#include <bit>
#include <cstdint>
#include <filesystem>
#include <memory>

#include "OrvaTestSupport.h"
#include "model/OrvaCCFGroup.h"
#include "model/OrvaParameter.h"
#include "model/OrvaProbabilityDistribution.h"
#include "printer/OrvaPrinter.h"

namespace {

using Expression = OrvaProbabilityDistribution;

// All that a model holds, as a text.

std::string Describe(const Expression* expression) {
  if (expression == nullptr) return "none";
  const LumoConstant* value = expression->GetValue();
  std::string text = std::string(Expression::GetFunctor(expression->GetType())) + " " +
                     std::to_string(value->GetType()) + " " +
                     std::to_string(std::bit_cast<std::uint64_t>(value->ToDouble()));
  if (const OrvaParameter* parameter = expression->GetReferencedParameter()) {
    text += std::string(" ") + parameter->GetName();
  }
  text += "(";
  for (const Expression* child = expression->GetFirstChild(); child != nullptr;
       child = child->GetNextSibling()) {
    text += Describe(child) + ",";
  }
  return text + ")";
}

template <class Owner>
std::string DescribeAttributes(const Owner* owner) {
  std::string text = owner->GetName();
  for (const char* name : {"label", "unit", "riskspectrum:type", "riskspectrum:model"}) {
    text += std::string(" | ") + owner->GetAttributeAsString(name, "none");
  }
  return text + " | ";
}

std::string Describe(const OrvaModel* model) {
  std::string text = std::string(model->GetFormat()) + "\n";
  for (const OrvaEvent* event : LumoItems<OrvaEvent>(model->GetEvents())) {
    text += DescribeAttributes(event) + std::to_string(event->GetType()) +
            OrvaShortModel::Write(event->GetDefinition()) +
            Describe(event->GetProbabilityDistribution()) + "\n";
  }
  for (const OrvaParameter* parameter : LumoItems<OrvaParameter>(model->GetParameters())) {
    text += DescribeAttributes(parameter) + Describe(parameter->GetDefinition()) + "\n";
  }
  for (const OrvaCCFGroup* group : LumoItems<OrvaCCFGroup>(model->GetCCFGroups())) {
    text += DescribeAttributes(group) + std::to_string(group->GetType());
    for (int i = 0; i < group->GetNumberOfMembers(); ++i) text += group->GetMember(i)->GetName();
    text += Describe(group->GetDistribution());
    for (int i = 0; i <= group->GetHighestLevel(); ++i) text += Describe(group->GetFactor(i));
    text += "\n";
  }
  return text;
}

// Reads a model; false when it is no model, or faulty.
bool Read(OrvaTestEngine& engine, const std::string& text) {
  if (text.find("<orva") != std::string::npos) return false;
  const OrvaTextFile file(text);
  int error = 0;
  engine->DownloadCommandScript(error, file.Get());
  return error == 0;
}

// As a text; empty when it has names or texts that can't be written.
std::string Print(OrvaTestEngine& engine) {
  int error = 0;
  LumoXMLDocument* document = nullptr;
  engine->GetPrinter()->UploadModel(error, engine.GetModel(), document);
  const std::unique_ptr<LumoXMLDocument> owner(document);
  OrvaTextStream stream;
  if (document != nullptr) document->Print(stream.Get(), 2);
  return stream.GetText();
}

TEST(PrintedModels, ReadBackAsTheyWere) {
  int number = 0;
  for (const char* folder : {"tests/printed-models", "tests/cases", "examples"}) {
    for (const auto& entry :
         std::filesystem::recursive_directory_iterator(ORVA_FOLDER + std::string("/") + folder)) {
      if (entry.path().extension() != ".xml") continue;
      SCOPED_TRACE(entry.path());
      OrvaTestEngine first, second;
      if (!Read(first, OrvaTestEngine::ReadFile(entry.path()))) continue;
      const std::string printed = Print(first);
      if (printed.empty()) continue;
      ++number;
      ASSERT_TRUE(Read(second, printed)) << printed;
      ASSERT_EQ(Describe(second.GetModel()), Describe(first.GetModel()));
      ASSERT_EQ(Print(second), printed);
      for (const double date : {0.0, 10.0, 77.5}) {
        for (OrvaTestEngine* engine : {&first, &second}) {
          engine->GetModel()->Complete();
          engine->GetModel()->ComputeProbabilitiesOfBasicEvents(date);
        }
        ASSERT_EQ(Describe(second.GetModel()), Describe(first.GetModel())) << date;
      }
      ASSERT_EQ(Print(second), Print(first));
    }
  }
  EXPECT_GT(number, 100);
}

}  // namespace
