#include <functional>
#include <memory>
#include <numeric>
#include <random>

#include "OrvaTestSupport.h"
#include "store/OrvaMCSSet.h"
#include "support/containers/LumoList.h"

namespace {

using Node = OrvaMCSNode;

class NodeStoreTest : public testing::Test {
 protected:
  Node* Cutset() { return _manager.NewMinimalCutsetLeaf(); }
  Node* Open() { return _manager.NewUndevelopedLeaf(); }
  Node* If(int index, Node* thenSon, Node* elseSon) {
    return _manager.NewInternalNode(index, thenSon, elseSon);
  }
  // "(index then else)", leaves as their types.
  static std::string Write(const Node* node) {
    if (!node->IsInternal()) return std::to_string(node->GetType());
    EXPECT_EQ(node->GetThenSon()->GetParent(), node);
    EXPECT_EQ(node->GetElseSon()->GetParent(), node);
    return "(" + std::to_string(node->GetIndex()) + " " + Write(node->GetThenSon()) + " " +
           Write(node->GetElseSon()) + ")";
  }
  // The nodes of the store less those that can be taken before it needs another page.
  int CountNodesInUse() {
    const int all = _manager.GetNumberOfNodes();
    std::vector<Node*> taken;
    do taken.push_back(Open());
    while (_manager.GetNumberOfNodes() == all);
    for (Node* node : taken) _manager.FreeNode(node);
    return all - static_cast<int>(taken.size()) + 1;
  }

  OrvaMCSManager _manager;
};

TEST_F(NodeStoreTest, PagesDoubleUpToAMillionNodes) {
  int expected = 0;
  for (const int size : {32768, 65536, 131072, 262144, 524288, 1048576, 1048576}) {
    expected += size;
    const Node* first = Open();  // the nodes of a page are handed out in their order
    for (int i = 1; i < size; ++i) ASSERT_EQ(Open(), first + i);
    EXPECT_EQ(_manager.GetNumberOfNodes(), expected);
  }
  _manager.Reset();
  EXPECT_EQ(_manager.GetNumberOfNodes(), 32768);
  Node* last = Open();
  _manager.FreeNode(last);
  EXPECT_EQ(Cutset(), last);  // the one freed last is the next one
}

TEST_F(NodeStoreTest, FoldingFreesWhatLiesBelow) {
  // Undeveloped sons are in the mask of the search.
  Node *root = Open(), *thenLeaf, *elseLeaf;
  _manager.ExpandLeaf(root, Node::MAXIMUM_INDEX, thenLeaf, elseLeaf);
  EXPECT_EQ(root->GetType(), 33u);
  _manager.MuteLeaf(thenLeaf, Node::MINIMAL_CUTSET);
  _manager.MuteLeaf(elseLeaf, Node::CUTOFF);
  _manager.FoldInternalNode(root, 47);
  EXPECT_EQ(root->GetType(), 32u | 15u | 16u);  // recomputed
  EXPECT_EQ(Write(root), "(16777215 15 16)");
  const auto cutoff = [&] { return _manager.NewCutoffLeaf(); };
  Node* other = If(1, If(2, cutoff(), cutoff()), cutoff());
  _manager.FoldInternalNode(other, 47);  // not while a son is internal
  EXPECT_EQ(CountNodesInUse(), 8);
  _manager.FoldInternalNode(other->GetThenSon(), 47);
  _manager.FoldInternalNode(other, 47);
  EXPECT_EQ(Write(other), std::to_string(Node::CUTOFF));
  other = If(3, _manager.NewPathsetLeaf(), _manager.NewNonMinimalCutsetLeaf());
  _manager.FoldInternalNode(other, 3);  // a leaf of the joint type
  EXPECT_EQ(Write(other), "12");
  EXPECT_EQ(CountNodesInUse(), 5);
}

TEST_F(NodeStoreTest, CopyResetAndFree) {
  Node* root = If(3, If(4, Cutset(), _manager.NewCutoffLeaf()),
                  If(5, _manager.NewDeadEndLeaf(), If(6, Open(), _manager.NewPathsetLeaf())));
  Node* copy = _manager.CopyTree(root);
  EXPECT_EQ(Write(copy), "(3 (4 15 1) (5 1 (6 1 1)))");
  EXPECT_EQ(copy->GetParent(), nullptr);
  EXPECT_EQ(copy->GetElseSon()->GetType(), 33u);
  EXPECT_EQ(Write(root), "(3 (4 15 16) (5 2 (6 1 4)))");
  _manager.ResetTree(root);
  EXPECT_EQ(Write(root), "(3 (4 15 1) (5 2 (6 1 4)))");
  EXPECT_EQ(root->GetType(), 32u | 15u);
  EXPECT_EQ(root->GetElseSon()->GetType(), 32u | 7u);
  _manager.FreeTree(root);
  _manager.FreeTree(copy);
  EXPECT_EQ(CountNodesInUse(), 0);

  // A set frees its tree when it gets another, not the same again, nor when it ends.
  root = If(1, Cutset(), Open());
  auto set = std::make_unique<OrvaMCSSet>(&_manager, root);
  const std::unique_ptr<OrvaMCSSet> twin(set->Copy());
  set->SetRootNode(root);
  set.reset();
  EXPECT_EQ(Write(root), "(1 15 1)");
  EXPECT_EQ(CountNodesInUse(), 6);
  twin->SetRootNode(root);
  EXPECT_EQ(CountNodesInUse(), 3);
  twin->FreeTree();
  const std::unique_ptr<OrvaMCSSet> empty(twin->Copy());
  EXPECT_EQ(empty->GetRootNode(), nullptr);
  EXPECT_EQ(empty->UpdateTopEventProbability(), 0.0);
  EXPECT_EQ(CountNodesInUse(), 0);
}

TEST_F(NodeStoreTest, EntriesComeWithTheirFirstSetter) {
  OrvaModel model;
  OrvaEvent* event = model.AddEvent("a", OrvaEvent::BASIC_EVENT);
  EXPECT_EQ(_manager.GetProbability(5), 0.0);
  EXPECT_EQ(_manager.GetValue(5), 2);
  _manager.SetEvent(5, event);
  EXPECT_EQ(_manager.GetProbability(5), 1.0);  // an entry starts so
  _manager.SetProbability(3, 0.25);
  _manager.SetValue(9, 1);
  EXPECT_EQ(_manager.GetIndexOfLowestEntry(), 3);
  EXPECT_EQ(_manager.GetIndexOfHighestEntry(), 9);
  for (const int size : {10, 20000}) {  // never shrinks
    _manager.SetSizeOfEntryTable(size);
    EXPECT_EQ(_manager.GetSizeOfEntryTable(), std::max(size, 8192));
    EXPECT_EQ(_manager.GetEvent(5), event);
  }
}

// What the walks over a tree find, as a text of orders and occurrences, and two probabilities.
struct Statistics {
  explicit Statistics(const OrvaMCSSet& set) {
    int last, sum, order;
    set.ComputeSizeOfTree(size);
    set.ComputeNumberOfMinimalCutsets(number);
    set.ComputeHighestOrderOfMinimalCutsets(order);
    set.ComputeSumOfMinimalCutsetProbabilities(probability);
    set.ComputeHighestMinimalCutsetProbability(highest);
    int* numbers;
    set.ComputeOrdersOfMinimalCutsets(numbers, last, sum);
    if (last >= 0) orders.assign(numbers, numbers + last + 1);
    EXPECT_EQ(order, last);
    EXPECT_EQ(sum, number);
    delete[] numbers;
    set.ComputeNumberOfOccurrencesOfVariablesInMinimalCutsets(numbers, last, sum);
    if (numbers != nullptr) occurrences.assign(numbers, numbers + last + 1);
    EXPECT_EQ(sum, std::accumulate(occurrences.begin(), occurrences.end(), 0));
    delete[] numbers;
  }
  int size, number;
  double probability, highest;
  std::vector<int> orders, occurrences;
};

// All paths of a random tree, one by one, against the walks.
TEST_F(NodeStoreTest, StatisticsAgreeWithTheEnumerationOfPaths) {
  constexpr int INDICES = 9;
  std::mt19937 random(99);
  const auto draw = [&](int n) { return std::uniform_int_distribution<int>(0, n - 1)(random); };
  for (int i = 1; i <= INDICES; ++i) _manager.SetProbability(i, (1 + draw(999)) / 1000.0);
  for (int trial = 0; trial < 300; ++trial) {
    struct Path {
      std::vector<int> cutset;
      double p, product;  // of the cutset; with the complements of the else-branches
    };
    std::vector<Path> paths;  // of the cutsets, then before else
    int size = 0;
    const std::function<Node*(const Path&, int)> grow = [&](const Path& path, int index) -> Node* {
      ++size;
      if (index > INDICES || draw(6) == 0) {
        if (draw(2) == 0) return draw(2) == 0 ? Open() : _manager.NewDeadEndLeaf();
        paths.push_back(path);
        return Cutset();
      }
      const double p = _manager.GetProbability(index);
      const int next = index + 1 + draw(2);
      Path thenPath = {path.cutset, path.p * p, path.product * p};
      thenPath.cutset.push_back(index);
      Node* thenSon = grow(thenPath, next);
      return If(index, thenSon, grow({path.cutset, path.p, path.product * (1.0 - p)}, next));
    };
    OrvaMCSSet set(&_manager, grow({{}, 1.0, 1.0}, 1));

    double sum = 0.0;
    double highest = 0.0;
    std::vector<int> orders;
    std::vector<int> occurrences(INDICES + 1, 0);
    for (const Path& path : paths) {
      for (const int i : path.cutset) ++occurrences[static_cast<std::size_t>(i)];
      orders.resize(std::max(orders.size(), path.cutset.size() + 1), 0);
      ++orders[path.cutset.size()];
      sum += path.p;
      highest = std::max(highest, path.p);
    }
    const Statistics found(set);
    EXPECT_EQ(found.size, size);
    EXPECT_EQ(found.number, std::ssize(paths));
    EXPECT_NEAR(found.probability, sum, 1e-12 * (1.0 + sum));
    EXPECT_NEAR(found.highest, highest, 1e-15);
    EXPECT_EQ(found.orders, orders);
    EXPECT_EQ(found.occurrences, occurrences);

    // What is computed from flat arrays: the sum to the last bit, and each event's share in it.
    EXPECT_EQ(set.UpdateTopEventProbability(), std::min(found.probability, 1.0));
    EXPECT_EQ(set.UpdateMarginalImportanceFactors(), std::min(found.probability, 1.0));
    for (int i = 1; i <= INDICES; ++i) {
      double factor = 0.0;
      for (const Path& path : paths) {
        const bool isIn = std::find(path.cutset.begin(), path.cutset.end(), i) != path.cutset.end();
        factor += isIn ? path.p / _manager.GetProbability(i) : 0.0;
      }
      const OrvaMCSBasicEvent* event = set.GetBasicEvent(i);
      EXPECT_NEAR(event->marginalImportanceFactor, factor, 1e-12 * (1.0 + factor));
      EXPECT_EQ(event->numberOfOccurrences, occurrences[static_cast<std::size_t>(i)]);
    }

    // The cutset leaves come in order; each way to weigh them gives what its path gives.
    LumoList leaves;
    set.CollectMinimalCutsets(&leaves);
    ASSERT_EQ(leaves.GetNumberOfItems(), std::ssize(paths));
    for (int kind = 0; kind < 4; ++kind) {
      if (kind == 0) _manager.SetWeightsOfLeavesAsCutsetOrders(set.GetRootNode(), 3);
      if (kind == 1) set.SetWeightsOfLeavesAsCutsetProbabilities();
      if (kind == 2) set.SetWeightsOfLeavesAsProductProbabilities();
      if (kind == 3) set.ResetWeightsOfLeaves();
      int i = 0;
      for (const Path& path : paths) {
        const Node* leaf = static_cast<const Node*>(leaves.GetNthItem(++i));
        const double order = static_cast<double>(path.cutset.size());
        const double weights[] = {3.0 + order, path.p, path.product, 0.0};
        EXPECT_EQ(leaf->GetCutsetOrder(), order);
        EXPECT_NEAR(OrvaMCSManager::GetWeight(leaf), weights[kind], 1e-15);
      }
    }
    set.FreeTree();
  }
}

// Probabilities and factors are those of the tree as it is, whoever has changed it in between.
TEST_F(NodeStoreTest, NoResultOfAFormerTreeIsLeft) {
  _manager.SetProbability(1, 0.5);
  _manager.SetProbability(2, 0.25);
  Node *leaf = Open(), *root = If(1, Cutset(), leaf), *thenLeaf, *elseLeaf;
  OrvaMCSSet set(&_manager, root);
  EXPECT_EQ(set.UpdateTopEventProbability(), 0.5);
  _manager.ExpandLeaf(leaf, 2, thenLeaf, elseLeaf);
  EXPECT_EQ(set.UpdateTopEventProbability(), 0.5);
  _manager.MuteLeaf(thenLeaf, Node::MINIMAL_CUTSET);
  EXPECT_EQ(set.UpdateMarginalImportanceFactors(), 0.75);
  EXPECT_EQ(set.GetBasicEvent(2)->numberOfOccurrences, 1);
  EXPECT_EQ(set.GetBasicEvent(2)->marginalImportanceFactor, 1.0);
  _manager.SetProbability(2, 0.125);
  EXPECT_EQ(set.UpdateTopEventProbability(), 0.625);
  _manager.MuteLeaf(thenLeaf, Node::DEAD_END);
  _manager.FoldInternalNode(leaf, Node::MINIMAL_CUTSET);
  EXPECT_EQ(set.UpdateMarginalImportanceFactors(), 0.5);
  EXPECT_EQ(set.GetBasicEvent(2)->marginalImportanceFactor, 0.0);
  set.FreeTree();
  EXPECT_EQ(set.UpdateTopEventProbability(), 0.0);
  set.SetRootNode(Cutset());
  EXPECT_EQ(set.UpdateTopEventProbability(), 1.0);
}

// Neither chain may cost stack: a million nodes, built upward.
TEST_F(NodeStoreTest, ChainsOfAMillionNodes) {
  constexpr int LENGTH = 1000000;
  _manager.SetSizeOfEntryTable(LENGTH + 1);
  for (int i = 1; i <= LENGTH; ++i) _manager.SetProbability(i, i % 2 == 0 ? 1.0 : 0.5);
  for (const bool isThenChain : {false, true}) {
    Node* root = isThenChain ? Cutset() : Open();
    for (int i = LENGTH; i-- > 0;) {
      root = isThenChain ? If(i + 1, root, _manager.NewCutoffLeaf()) : If(i + 1, Cutset(), root);
    }
    _manager.ResetTree(root);
    OrvaMCSSet set(&_manager, _manager.CopyTree(root));
    _manager.FreeTree(root);
    const int cutsets = isThenChain ? 1 : LENGTH;
    const Statistics found(set);
    EXPECT_EQ(found.size, 2 * LENGTH + 1);
    EXPECT_EQ(found.number, cutsets);
    EXPECT_EQ(found.probability, isThenChain ? 0.0 : 0.75 * LENGTH);  // 2^-500000 is 0
    EXPECT_EQ(found.highest, isThenChain ? 0.0 : 1.0);
    EXPECT_EQ(set.UpdateMarginalImportanceFactors(), isThenChain ? 0.0 : 1.0);
    EXPECT_EQ(found.orders.back(), cutsets);
    EXPECT_EQ(found.occurrences.size(), LENGTH + 1u);
    EXPECT_EQ(std::accumulate(found.occurrences.begin(), found.occurrences.end(), 0), LENGTH);
    set.SetWeightsOfLeavesAsCutsetProbabilities();
    LumoList leaves;
    set.CollectMinimalCutsets(&leaves);
    ASSERT_EQ(leaves.GetNumberOfItems(), cutsets);
    EXPECT_EQ(static_cast<const Node*>(leaves.GetLastItem())->GetWeight(), isThenChain ? 0.0 : 1.0);
    set.FreeTree();
  }
  EXPECT_EQ(CountNodesInUse(), 0);
}

}  // namespace
