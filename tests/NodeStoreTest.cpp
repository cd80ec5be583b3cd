#include <algorithm>
#include <functional>
#include <memory>
#include <random>
#include <vector>

#include "OrvaTestSupport.h"
#include "mcs/OrvaMCSSet.h"
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
  const Node* first = Open();
  EXPECT_EQ(_manager.GetNumberOfNodes(), 32768);
  int taken = 1;
  // The nodes of a page are handed out in their order.
  for (; taken < 32768; ++taken) ASSERT_EQ(Open(), first + taken);
  int expected = 32768;
  for (const int size : {65536, 131072, 262144, 524288, 1048576, 1048576}) {
    expected += size;
    first = Open();
    EXPECT_EQ(_manager.GetNumberOfNodes(), expected);
    ++taken;
    for (int i = 1; i < size; ++i, ++taken) ASSERT_EQ(Open(), first + i);
    EXPECT_EQ(_manager.GetNumberOfNodes(), expected);
  }
  _manager.Reset();
  EXPECT_EQ(_manager.GetNumberOfNodes(), 32768);
  EXPECT_EQ(_manager.GetIndexOfHighestEntry(), 0);

  // The node freed last is the next one.
  Node* a = Open();
  Node* b = Cutset();
  _manager.FreeNode(a);
  _manager.FreeNode(b);
  EXPECT_EQ(Cutset(), b);
  EXPECT_EQ(Open(), a);
  EXPECT_EQ(a->GetType(), Node::UNDEVELOPED);
  EXPECT_EQ(a->GetWeight(), 0.0);
}

TEST_F(NodeStoreTest, TypesJoinAndFold) {
  Node* const leaves[] = {Open(),
                          _manager.NewDeadEndLeaf(),
                          _manager.NewPathsetLeaf(),
                          _manager.NewNonMinimalCutsetLeaf(),
                          Cutset(),
                          _manager.NewCutoffLeaf()};
  const unsigned types[] = {1, 2, 4, 8, 15, 16};
  for (int i = 0; i < 6; ++i) EXPECT_EQ(leaves[i]->GetType(), types[i]);
  Node* inner = If(Node::MAXIMUM_INDEX, leaves[1], leaves[5]);
  EXPECT_EQ(inner->GetType(), 32u | 2u | 16u);
  EXPECT_EQ(inner->GetIndex(), 16777215);
  EXPECT_EQ(inner->GetWeight(), 0.0);
  EXPECT_EQ(leaves[1]->GetParent(), inner);

  // Undeveloped sons are in the mask of the search.
  Node* root = leaves[0];
  Node* thenLeaf;
  Node* elseLeaf;
  _manager.ExpandLeaf(root, 7, thenLeaf, elseLeaf);
  EXPECT_EQ(Write(root), "(7 1 1)");
  EXPECT_EQ(root->GetType(), 33u);
  _manager.FoldInternalNode(root, 47);
  EXPECT_EQ(Write(root), "(7 1 1)");
  _manager.MuteLeaf(thenLeaf, Node::MINIMAL_CUTSET);
  _manager.MuteLeaf(elseLeaf, Node::CUTOFF);
  _manager.FoldInternalNode(root, 47);
  EXPECT_EQ(root->GetType(), 32u | 15u | 16u);  // recomputed
}

TEST_F(NodeStoreTest, FoldingFreesWhatLiesBelow) {
  Node* root =
      If(1, If(2, _manager.NewCutoffLeaf(), _manager.NewCutoffLeaf()), _manager.NewCutoffLeaf());
  Node* other = If(3, _manager.NewPathsetLeaf(), _manager.NewNonMinimalCutsetLeaf());
  _manager.FoldInternalNode(root, 47);  // not while a son is internal
  EXPECT_EQ(root->GetType(), 48u);
  EXPECT_EQ(CountNodesInUse(), 8);
  _manager.FoldInternalNode(root->GetThenSon(), 47);
  _manager.FoldInternalNode(root, 47);
  EXPECT_EQ(root->GetType(), Node::CUTOFF);
  EXPECT_EQ(root->GetIndex(), 0);
  EXPECT_EQ(root->GetWeight(), 0.0);
  EXPECT_EQ(CountNodesInUse(), 4);
  _manager.FoldInternalNode(other, 3);  // a leaf of the joint type
  EXPECT_EQ(other->GetType(), 12u);
  EXPECT_EQ(CountNodesInUse(), 2);
}

TEST_F(NodeStoreTest, CopyResetAndFree) {
  Node* root = If(3, If(4, Cutset(), _manager.NewCutoffLeaf()),
                  If(5, _manager.NewDeadEndLeaf(), If(6, Open(), _manager.NewPathsetLeaf())));
  EXPECT_EQ(root->GetThenSon()->GetThenSon()->GetCutsetOrder(), 2);
  EXPECT_EQ(root->GetElseSon()->GetElseSon()->GetThenSon()->GetCutsetOrder(), 1);
  EXPECT_EQ(root->GetCutsetOrder(), 0);
  Node* copy = _manager.CopyTree(root);
  EXPECT_EQ(Write(copy), "(3 (4 15 1) (5 1 (6 1 1)))");
  EXPECT_EQ(copy->GetParent(), nullptr);
  EXPECT_EQ(copy->GetType(), 32u | 15u);
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
  EXPECT_EQ(Write(twin->GetRootNode()), "(1 15 1)");
  set->SetRootNode(root);
  set.reset();
  EXPECT_EQ(Write(root), "(1 15 1)");
  EXPECT_EQ(CountNodesInUse(), 6);
  twin->SetRootNode(root);
  EXPECT_EQ(CountNodesInUse(), 3);
  twin->FreeTree();
  EXPECT_EQ(twin->GetRootNode(), nullptr);
  const std::unique_ptr<OrvaMCSSet> empty(twin->Copy());
  EXPECT_EQ(empty->GetRootNode(), nullptr);
  EXPECT_EQ(CountNodesInUse(), 0);
}

TEST_F(NodeStoreTest, EntriesComeWithTheirFirstSetter) {
  OrvaModel model;
  OrvaEvent* event = model.AddEvent("a", OrvaEvent::BASIC_EVENT);
  EXPECT_EQ(_manager.GetSizeOfEntryTable(), 8192);
  EXPECT_EQ(_manager.GetEntry(5), nullptr);
  EXPECT_EQ(_manager.GetProbability(5), 0.0);
  EXPECT_EQ(_manager.GetValue(5), 2);
  EXPECT_EQ(_manager.GetEvent(5), nullptr);
  EXPECT_EQ(_manager.GetIndexOfLowestEntry() + _manager.GetIndexOfHighestEntry(), 0);
  _manager.SetEvent(5, event);
  EXPECT_EQ(_manager.GetProbability(5), 1.0);  // an entry starts so
  EXPECT_EQ(_manager.GetValue(5), 2);
  EXPECT_EQ(_manager.GetIndexOfLowestEntry(), 5);
  EXPECT_EQ(_manager.GetIndexOfHighestEntry(), 5);
  _manager.SetProbability(3, 0.25);
  _manager.SetValue(9, 1);
  EXPECT_EQ(_manager.GetIndexOfLowestEntry(), 3);
  EXPECT_EQ(_manager.GetIndexOfHighestEntry(), 9);
  _manager.SetSizeOfEntryTable(10);  // never shrinks
  EXPECT_EQ(_manager.GetSizeOfEntryTable(), 8192);
  _manager.SetSizeOfEntryTable(20000);
  EXPECT_EQ(_manager.GetEvent(5), event);
  EXPECT_EQ(_manager.GetProbability(3), 0.25);
  EXPECT_EQ(_manager.GetEntry(19999), nullptr);

  OrvaMCSEntryTable table(&_manager);
  table.SetEvent(4, event);
  table.SetValue(6, 0);
  table.SetEvent(8, event);
  EXPECT_EQ(table.GetNumberOfActiveEntries(), 2);
  EXPECT_FALSE(table.IsEntryActive(6));
  table.Reset();
  EXPECT_EQ(table.GetNumberOfActiveEntries() + table.GetIndexOfHighestEntry(), 0);
  EXPECT_EQ(table.GetEntry(4), nullptr);
}

TEST_F(NodeStoreTest, SmallSets) {
  int order;
  int total;
  int* numbers = &order;
  double value;
  OrvaMCSSet empty(&_manager, Open());
  empty.ComputeOrdersOfMinimalCutsets(numbers, order, total);
  EXPECT_EQ(order, -1);
  EXPECT_EQ(numbers, nullptr);
  EXPECT_EQ(total, 0);
  EXPECT_EQ(empty.UpdateTopEventProbability(), 0.0);
  EXPECT_EQ(OrvaMCSSet(&_manager, nullptr).UpdateTopEventProbability(), 0.0);

  OrvaMCSSet certain(&_manager, Cutset());
  certain.ComputeHighestOrderOfMinimalCutsets(order);
  certain.ComputeSumOfMinimalCutsetProbabilities(value);
  EXPECT_EQ(order, 0);
  EXPECT_EQ(value, 1.0);

  _manager.SetProbability(1, 0.5);
  _manager.SetProbability(2, 0.75);
  OrvaMCSSet two(&_manager, If(1, Cutset(), If(2, Cutset(), Open())));
  two.ComputeSumOfMinimalCutsetProbabilities(value);
  EXPECT_EQ(value, 1.25);
  EXPECT_EQ(two.UpdateTopEventProbability(), 1.0);
  EXPECT_EQ(two.GetTopEventProbability(), 1.0);
  _manager.SetProbability(2, -0.75);
  EXPECT_EQ(two.UpdateTopEventProbability(), 0.0);
}

// All paths of a random tree, one by one, against the walks.
TEST_F(NodeStoreTest, StatisticsAgreeWithTheEnumerationOfPaths) {
  constexpr int INDICES = 9;
  std::mt19937 random(99);
  const auto draw = [&](int n) { return std::uniform_int_distribution<int>(0, n - 1)(random); };
  for (int i = 1; i <= INDICES; ++i) _manager.SetProbability(i, (1 + draw(999)) / 1000.0);
  for (int trial = 0; trial < 300; ++trial) {
    struct Path {
      std::vector<int> cutset;
      double product;  // with the complements of the else-branches
      bool isCutset;
    };
    std::vector<Path> paths;  // then before else
    int size = 0;
    const std::function<Node*(Path, int)> grow = [&](Path path, int index) -> Node* {
      ++size;
      if (index > INDICES || draw(6) == 0) {
        path.isCutset = draw(2) == 0;
        paths.push_back(path);
        return path.isCutset ? Cutset() : draw(2) == 0 ? Open() : _manager.NewDeadEndLeaf();
      }
      const double p = _manager.GetProbability(index);
      const int next = index + 1 + draw(2);
      Path thenPath = path;
      thenPath.cutset.push_back(index);
      thenPath.product *= p;
      path.product *= 1.0 - p;
      Node* thenSon = grow(thenPath, next);
      return If(index, thenSon, grow(path, next));
    };
    OrvaMCSSet set(&_manager, grow({{}, 1.0, false}, 1));
    const auto getProbability = [&](const Path& path) {
      double p = 1.0;
      for (const int i : path.cutset) p *= _manager.GetProbability(i);
      return p;
    };

    double sum = 0.0;
    double highest = 0.0;
    std::vector<int> orders;
    std::vector<int> occurrences(INDICES + 1, 0);
    int cutsets = 0;
    int totalOfOccurrences = 0;
    for (const Path& path : paths) {
      if (!path.isCutset) continue;
      for (const int i : path.cutset) ++occurrences[static_cast<std::size_t>(i)];
      orders.resize(std::max(orders.size(), path.cutset.size() + 1), 0);
      ++orders[path.cutset.size()];
      totalOfOccurrences += static_cast<int>(path.cutset.size());
      sum += getProbability(path);
      highest = std::max(highest, getProbability(path));
      ++cutsets;
    }

    int number;
    double value;
    set.ComputeSizeOfTree(number);
    EXPECT_EQ(number, size);
    set.ComputeNumberOfMinimalCutsets(number);
    EXPECT_EQ(number, cutsets);
    set.ComputeHighestOrderOfMinimalCutsets(number);
    EXPECT_EQ(number, static_cast<int>(orders.size()) - 1);
    set.ComputeSumOfMinimalCutsetProbabilities(value);
    EXPECT_NEAR(value, sum, 1e-12 * (1.0 + sum));
    set.ComputeHighestMinimalCutsetProbability(value);
    EXPECT_NEAR(value, highest, 1e-15);
    int* numbers;
    int last;
    int total;
    set.ComputeOrdersOfMinimalCutsets(numbers, last, total);
    const std::unique_ptr<int[]> ownerOfOrders(numbers);
    EXPECT_EQ(std::vector<int>(numbers, numbers + last + 1), orders);
    EXPECT_EQ(total, cutsets);
    set.ComputeNumberOfOccurrencesOfVariablesInMinimalCutsets(numbers, last, total);
    const std::unique_ptr<int[]> ownerOfOccurrences(numbers);
    ASSERT_EQ(last, INDICES);
    EXPECT_EQ(std::vector<int>(numbers, numbers + last + 1), occurrences);
    EXPECT_EQ(total, totalOfOccurrences);

    // The cutset leaves come in order; each way to weigh them gives what its path gives.
    LumoList leaves;
    set.CollectMinimalCutsets(&leaves);
    ASSERT_EQ(leaves.GetNumberOfItems(), cutsets);
    for (int kind = 0; kind < 4; ++kind) {
      if (kind == 0) _manager.SetWeightsOfLeavesAsCutsetOrders(set.GetRootNode(), 3);
      if (kind == 1) set.SetWeightsOfLeavesAsCutsetProbabilities();
      if (kind == 2) set.SetWeightsOfLeavesAsProductProbabilities();
      if (kind == 3) set.ResetWeightsOfLeaves();
      int i = 0;
      for (const Path& path : paths) {
        if (!path.isCutset) continue;
        const Node* leaf = static_cast<const Node*>(leaves.GetNthItem(++i));
        const double order = static_cast<double>(path.cutset.size());
        const double weights[] = {3.0 + order, getProbability(path), path.product, 0.0};
        EXPECT_EQ(leaf->GetCutsetOrder(), order);
        EXPECT_NEAR(OrvaMCSManager::GetWeight(leaf), weights[kind], 1e-15);
      }
    }
    set.FreeTree();
  }
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
    int number;
    double value;
    set.ComputeSizeOfTree(number);
    EXPECT_EQ(number, 2 * LENGTH + 1);
    set.ComputeNumberOfMinimalCutsets(number);
    EXPECT_EQ(number, cutsets);
    set.ComputeHighestOrderOfMinimalCutsets(number);
    EXPECT_EQ(number, isThenChain ? LENGTH : 1);
    set.ComputeSumOfMinimalCutsetProbabilities(value);
    EXPECT_EQ(value, isThenChain ? 0.0 : 0.75 * LENGTH);  // 2^-500000 is 0
    set.ComputeHighestMinimalCutsetProbability(value);
    EXPECT_EQ(value, isThenChain ? 0.0 : 1.0);
    int* numbers;
    int last;
    int total;
    set.ComputeOrdersOfMinimalCutsets(numbers, last, total);
    EXPECT_EQ(numbers[last], cutsets);
    EXPECT_EQ(total, cutsets);
    delete[] numbers;
    set.ComputeNumberOfOccurrencesOfVariablesInMinimalCutsets(numbers, last, total);
    EXPECT_EQ(last, LENGTH);
    EXPECT_EQ(numbers[LENGTH], 1);
    EXPECT_EQ(total, LENGTH);
    delete[] numbers;
    _manager.SetWeightsOfLeavesAsCutsetOrders(set.GetRootNode(), 0);
    LumoList leaves;
    set.CollectMinimalCutsets(&leaves);
    ASSERT_EQ(leaves.GetNumberOfItems(), cutsets);
    const Node* leaf = static_cast<const Node*>(leaves.GetLastItem());
    EXPECT_EQ(leaf->GetWeight(), isThenChain ? LENGTH : 1);
    set.SetWeightsOfLeavesAsCutsetProbabilities();
    EXPECT_EQ(leaf->GetWeight(), isThenChain ? 0.0 : 1.0);
    set.SetWeightsOfLeavesAsProductProbabilities();
    EXPECT_EQ(leaf->GetWeight(), 0.0);
    set.FreeTree();
  }
  EXPECT_EQ(CountNodesInUse(), 0);
}

}  // namespace
