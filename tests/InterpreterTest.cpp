#include <cstdio>

#include "OrvaTestSupport.h"
#include "support/memory/LumoMemoryManager.h"

namespace {

// The components, in the order in which the lines of the trace with that word name them.
std::string ReadOrder(const std::string& word) {
  const std::vector<std::string> components = {"OrvaModel",
                                               "OrvaPrinter",
                                               "OrvaParser",
                                               "OrvaChecker",
                                               "OrvaRewriter",
                                               "OrvaAnalyzer",
                                               "OrvaSystemBuilder",
                                               "OrvaMCSManager",
                                               "OrvaWalker",
                                               "OrvaOptionCenter",
                                               "LumoCongruentialRandomizer"};
  std::istringstream trace(OrvaTestEngine::ReadFile(LumoMemoryManager::TRACE_FILE));
  std::string order;
  for (std::string line; std::getline(trace, line);) {
    if (line.find("::" + word + " ") == std::string::npos) continue;
    const std::size_t start = line.find('/') + 1;
    const std::string name = line.substr(start, line.find(' ', start) - start);
    for (const std::string& component : components) {
      if (name == component) order += (order.empty() ? "" : " ") + name.substr(4);
    }
  }
  return order;
}

}  // namespace

// The components refer to each other until the end: both orders are defined.
TEST(Interpreter, ConstructsAndDestroysItsComponentsInOrder) {
  std::remove(LumoMemoryManager::TRACE_FILE);
  LumoMemoryManager::SetTraceAllocations(true);
  { const OrvaInterpreter interpreter; }
  LumoMemoryManager::SetTraceAllocations(false);
  EXPECT_EQ(ReadOrder("New"),
            "Model Printer Parser Checker Rewriter Analyzer SystemBuilder MCSManager Walker "
            "CongruentialRandomizer OptionCenter");
  EXPECT_EQ(ReadOrder("Delete"),
            "Walker SystemBuilder Analyzer Rewriter Checker Parser Printer Model MCSManager "
            "OptionCenter CongruentialRandomizer");
}
