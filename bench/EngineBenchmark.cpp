// The stretches of the road from a model file to minimal cutsets, each on generated models of
// growing size.

#include <benchmark/benchmark.h>
#include <memory>

#include "ModelGenerator.h"
#include "diagram/OrvaCutsetListing.h"
#include "diagram/OrvaCutsetSolver.h"
#include "diagram/OrvaDiagramGraph.h"
#include "driver/OrvaInterpreter.h"
#include "model/OrvaModel.h"
#include "quantification/OrvaHandle.h"
#include "quantification/OrvaVariableIndices.h"
#include "reader/OrvaChecker.h"
#include "reader/OrvaParser.h"
#include "search/OrvaWalker.h"
#include "support/random/LumoCongruentialRandomizer.h"
#include "system/OrvaRewriter.h"
#include "system/OrvaSystem.h"
#include "system/OrvaSystemBuilder.h"
#include "xml/LumoXMLDocument.h"

namespace {

constexpr unsigned SEED = 1;
constexpr const char* TOP = "CORE-DAMAGE";
constexpr const char* SYSTEM = "system";
constexpr int MAXIMUM_ORDER = 4;

// A model on its way, brought as far as a benchmark needs it.
class Study {
 public:
  explicit Study(const std::string& text) : _text(text) {}

  void Read() {
    std::FILE* file = fmemopen(_text.data(), _text.size(), "r");
    interpreter.GetParser()->DownloadModel(error, file, interpreter.GetModel());
    std::fclose(file);
    top = interpreter.GetModel()->LookForEvent(TOP);
  }
  void Normalise() {
    interpreter.GetModel()->Complete();
    interpreter.GetRewriter()->NormalizeModel(error, interpreter.GetModel(), top);
    interpreter.GetRewriter()->Modularize(interpreter.GetModel(), top);
  }
  void Check() { interpreter.GetChecker()->CheckModel(error, interpreter.GetModel()); }
  void Build() {
    system = interpreter.GetSystemBuilder()
                 ->BuildSystem(interpreter.GetModel(), top, SYSTEM, true)
                 ->GetSystem();
  }
  void LoadProbabilities() {
    interpreter.GetModel()->ComputeProbabilitiesOfBasicEvents(0.0);
    interpreter.GetSystemBuilder()->LoadProbabilities(interpreter.GetModel(), system, 0.0);
  }
  void Search(OrvaMCSSet* set) {
    OrvaCutoff cutoff;
    cutoff.SetMaximumOrder(MAXIMUM_ORDER);
    interpreter.GetWalker()->BuildMinimalCutsetTree(system, &cutoff, set);
  }
  void IndexEvents() {
    OrvaIndexInputVariables(system, interpreter.GetMCSManager());
    for (const OrvaVariable* variable : LumoItems<OrvaVariable>(system->GetDictionary())) {
      const OrvaEvent* event = variable->GetEvent();
      if (!variable->IsInputVariable() || !event->IsModule()) continue;
      OrvaIndexInputVariables(event->GetHandle(SYSTEM)->GetSystem(), interpreter.GetMCSManager());
    }
  }
  // From the formulas to the listed cutsets.
  void Solve(OrvaMCSSet* set) {
    IndexEvents();
    OrvaDiagramGraph graph;
    graph.BuildFromFormulas(top);
    const auto solution = OrvaCutsetSolver::Solve(graph, MAXIMUM_ORDER, 0.0);
    OrvaCutsetListing(*solution, interpreter.GetMCSManager()).AddTo(set);
  }

  OrvaInterpreter interpreter;
  int error = 0;
  OrvaEvent* top = nullptr;
  OrvaSystem* system = nullptr;

 private:
  std::string _text;
};

std::string GetModelText(const benchmark::State& state) {
  return GenerateModel(static_cast<int>(state.range(0)), SEED);
}

void BM_Read(benchmark::State& state) {
  const std::string text = GetModelText(state);
  for (auto _ : state) {
    Study study(text);
    study.Read();
  }
  state.SetComplexityN(state.range(0));
  state.SetBytesProcessed(state.iterations() * static_cast<long>(text.size()));
}

// Times one step after the steps before it.
template <class Prepare, class Step>
void TimeStep(benchmark::State& state, Prepare prepare, Step step) {
  const std::string text = GetModelText(state);
  for (auto _ : state) {
    state.PauseTiming();
    auto study = std::make_unique<Study>(text);
    prepare(*study);
    state.ResumeTiming();
    step(*study);
    state.PauseTiming();
    study.reset();
    state.ResumeTiming();
  }
  state.SetComplexityN(state.range(0));
}

void BM_Normalise(benchmark::State& state) {
  TimeStep(
      state, [](Study& study) { study.Read(); }, [](Study& study) { study.Normalise(); });
}

void BM_Check(benchmark::State& state) {
  TimeStep(
      state,
      [](Study& study) {
        study.Read();
        study.Normalise();
      },
      [](Study& study) { study.Check(); });
}

void BM_Build(benchmark::State& state) {
  TimeStep(
      state,
      [](Study& study) {
        study.Read();
        study.Normalise();
      },
      [](Study& study) { study.Build(); });
}

// How the minimal cutsets of a system with its probabilities are found.
template <class Find>
void TimeCutsets(benchmark::State& state, Find find) {
  TimeStep(
      state,
      [](Study& study) {
        study.Read();
        study.Normalise();
        study.Build();
        study.LoadProbabilities();
      },
      [&](Study& study) {
        OrvaMCSManager* manager = study.interpreter.GetMCSManager();
        OrvaMCSSet set(manager, manager->NewUndevelopedLeaf());
        find(study, &set);
        int number;
        set.ComputeNumberOfMinimalCutsets(number);
        state.counters["cutsets"] = number;
      });
}

void BM_Search(benchmark::State& state) {
  TimeCutsets(state, [](Study& study, OrvaMCSSet* set) { study.Search(set); });
}

// These cutsets are those of the whole top event: what the search leaves as modules is solved too.
void BM_Diagram(benchmark::State& state) {
  TimeCutsets(state, [](Study& study, OrvaMCSSet* set) { study.Solve(set); });
}

// One trial of a sensitivity analysis, and one point of a curve. The items are the nodes of the
// cutset tree and the basic events.
template <class Trial>
void TimeTrials(benchmark::State& state, Trial trial) {
  Study study(GetModelText(state));
  study.Read();
  study.Normalise();
  study.Build();
  study.LoadProbabilities();
  OrvaMCSManager* manager = study.interpreter.GetMCSManager();
  auto* set = new OrvaMCSSet(manager, manager->NewUndevelopedLeaf());
  study.Search(set);
  OrvaHandle* handle = study.top->NewHandle("MCS", set);
  LumoCongruentialRandomizer randomizer(1);
  handle->ResetSensitivityMeasureOfTopEvent(0, 0);
  for (auto _ : state) trial(handle, &randomizer);
  int nodes;
  set->ComputeSizeOfTree(nodes);
  state.SetItemsProcessed(state.iterations() *
                          (nodes + handle->GetBasicEvents()->GetNumberOfItems()));
}

void BM_Trial(benchmark::State& state) {
  TimeTrials(state, [](OrvaHandle* handle, LumoRandomizer* randomizer) {
    handle->DrawRandomDeviatesOfBasicEvents(randomizer);
    handle->ComputeTopEventProbability(0.0);
    handle->AddCurrentTopEventProbabilityToItsSensitivityMeasure();
  });
}

void BM_Point(benchmark::State& state) {
  TimeTrials(state, [](OrvaHandle* handle, LumoRandomizer*) {
    handle->ComputeTopEventUnconditionalFailureIntensity(0.0);
    benchmark::DoNotOptimize(handle->GetTopEventConditionalFailureIntensity());
  });
}

void Sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->RangeMultiplier(10)->Range(1000, 100000)->Unit(benchmark::kMillisecond);
}

BENCHMARK(BM_Read)->Apply(Sizes)->Complexity();
BENCHMARK(BM_Normalise)->Apply(Sizes)->Complexity();
BENCHMARK(BM_Check)->Apply(Sizes)->Complexity();
BENCHMARK(BM_Build)->Apply(Sizes)->Complexity();
BENCHMARK(BM_Search)->Arg(250)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Diagram)->Arg(250)->Arg(1000)->Arg(4000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Trial)->Arg(250)->Arg(1000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Point)->Arg(250)->Arg(1000)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
