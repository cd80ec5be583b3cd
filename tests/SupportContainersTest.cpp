#include <algorithm>
#include <array>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#include "OrvaTestSupport.h"
#include "support/containers/LumoAVLTree.h"
#include "support/containers/LumoArray.h"
#include "support/containers/LumoFunction.h"
#include "support/containers/LumoList.h"
#include "support/containers/LumoRange.h"

namespace {

// An item with a key that others may share, a name, and a mark word.
struct Item {
  int key = 0;
  char name = '?';
  int mark = 0;
};

int CompareKeys(const void* a, const void* b) {
  return static_cast<const Item*>(a)->key - static_cast<const Item*>(b)->key;
}
int MatchKey(const void* item, const void* key) {
  return static_cast<const Item*>(item)->key - *static_cast<const int*>(key);
}
bool IsOdd(const void* item) { return static_cast<const Item*>(item)->key % 2 != 0; }
void* GetKey(void* item) { return &static_cast<Item*>(item)->key; }
int* GetMark(void* item) { return &static_cast<Item*>(item)->mark; }
int CompareInts(const void* a, const void* b) {
  return *static_cast<const int*>(a) - *static_cast<const int*>(b);
}
void MarkItem(void* item) { ++static_cast<Item*>(item)->mark; }

// The names of a container's items, in its order.
std::string Names(const LumoContainer& container) {
  std::string names;
  for (const Item* item : LumoItems<Item>(container)) names += item->name;
  return names;
}

// The same for a new container, which is deleted.
std::string TakeNames(LumoContainer* container) {
  const std::unique_ptr<LumoContainer> owner(container);
  return Names(*container);
}

// The slots of an array up to `size`, "." for an empty one.
std::string Slots(const LumoArray& array, int size) {
  std::string slots;
  for (int i = 0; i < size; ++i) {
    const auto* item = static_cast<const Item*>(array.GetItem(i));
    slots += item == nullptr ? '.' : item->name;
  }
  return slots;
}

// Items a .. z with keys 1 .. 26, and containers filled by their names.
class ContainersTest : public testing::Test {
 protected:
  ContainersTest() {
    for (int i = 0; i < 26; ++i) _items[Index(i)] = {i + 1, static_cast<char>('a' + i), 0};
  }
  Item* Get(char name) { return &_items[Index(name - 'a')]; }
  void Fill(LumoContainer& container, const char* names) {
    for (; *names != '\0'; ++names) container.InsertItem(Get(*names));
  }
  // Slot by slot.
  void FillSlots(LumoArray& array, const char* slots) {
    for (int i = 0; slots[i] != '\0'; ++i)
      array.SetItem(i, slots[i] == '.' ? nullptr : Get(slots[i]));
  }

 private:
  static std::size_t Index(int i) { return static_cast<std::size_t>(i); }
  std::array<Item, 26> _items;
};

// What holds for every container; the items of each come in alphabetical order.
class AnyContainerTest : public ContainersTest, public testing::WithParamInterface<int> {
 protected:
  std::unique_ptr<LumoContainer> Make(const char* names = "") {
    std::unique_ptr<LumoContainer> container;
    if (GetParam() == 0) container = std::make_unique<LumoArray>(2);
    if (GetParam() == 1) container = std::make_unique<LumoList>();
    if (GetParam() == 2) container = std::make_unique<LumoAVLTree>(CompareKeys);
    Fill(*container, names);
    return container;
  }
};

}  // namespace

TEST_P(AnyContainerTest, FindsCountsAndRemovesItems) {
  const auto container = Make("abcde");
  const int three = 3;
  const int none = 99;
  EXPECT_EQ(container->GetNumberOfItems(), 5);
  EXPECT_EQ(container->GetNthItem(2), Get('b'));
  EXPECT_EQ(container->GetNthItem(6), nullptr);
  EXPECT_EQ(container->GetItemPosition(Get('d')), 4);
  EXPECT_EQ(container->SearchItem(MatchKey, &three), 3);
  EXPECT_EQ(container->LookForItem(MatchKey, &three), Get('c'));
  EXPECT_EQ(container->LookForItem(MatchKey, &none), nullptr);
  EXPECT_EQ(container->CountItems(IsOdd), 3);
  EXPECT_EQ(container->CountItems(MatchKey, &three), 1);
  const Item sameKey{3, 'x', 0};
  EXPECT_TRUE(container->DoesContainItem(Get('c')));
  EXPECT_FALSE(container->DoesContainItem(&sameKey));  // identity
  LumoList odd;
  container->CollectItems(IsOdd, &odd);
  EXPECT_EQ(Names(odd), "ace");

  container->DeleteItems(MatchKey, &three, MarkItem);
  EXPECT_EQ(Get('c')->mark, 1);
  container->RemoveNthItem(3);
  container->RemoveNthItem(9);
  container->RemoveItem(Get('a'));
  container->RemoveItem(Get('a'));
  EXPECT_EQ(Names(*container), "be");
  container->RemoveLastItem();
  container->RemoveFirstItem();
  container->RemoveFirstItem();
  EXPECT_TRUE(container->IsEmpty());
  EXPECT_EQ(container->GetFirstItem(), nullptr);
  EXPECT_EQ(container->GetLastItem(), nullptr);
  Fill(*container, "xy");
  EXPECT_EQ(Names(*container), "xy");
  container->DeleteItems(MarkItem);
  EXPECT_TRUE(container->IsEmpty());
  EXPECT_EQ(Get('x')->mark + Get('y')->mark, 2);
}

TEST_P(AnyContainerTest, SetOperations) {
  auto left = Make("abcd");
  const auto right = Make("cdef");
  const auto none = Make();
  EXPECT_EQ(left->CountItemsOfUnion(right.get()), 6);
  EXPECT_EQ(left->CountItemsOfIntersection(right.get()), 2);
  EXPECT_EQ(left->CountItemsOfDifference(right.get()), 2);
  EXPECT_TRUE(left->DoesContainItems(none.get()));
  EXPECT_FALSE(left->DoesContainItems(right.get()));
  left->Add(right.get());
  EXPECT_EQ(Names(*left), "abcdef");
  EXPECT_FALSE(left->HasSameItems(right.get()));
  left->Select(right.get());
  EXPECT_EQ(Names(*left), "cdef");
  EXPECT_TRUE(left->HasSameItems(right.get()));
  left->Subtract(Make("ae").get());
  EXPECT_EQ(Names(*left), "cdf");
  left->RemoveItems(Make("fz").get());
  left->DeleteItems(Make("dx").get(), MarkItem);
  EXPECT_EQ(Get('d')->mark, 1);
  EXPECT_EQ(Get('x')->mark, 0);  // it was not in the container
  EXPECT_EQ(Names(*left), "c");
  left = Make("c");
  left->InsertItems(Make("gh").get());
  EXPECT_EQ(Names(*left), "cgh");
  left->Apply(
      [](void* item, void* by) { static_cast<Item*>(item)->mark += *static_cast<int*>(by); },
      GetKey(Get('e')));
  EXPECT_EQ(Get('h')->mark, 5);
  LumoList results;
  left->Apply([](void* item, void* but) { return item == but ? nullptr : item; }, Get('g'),
              &results);
  EXPECT_EQ(Names(results), "ch");  // results that are null are not collected
  left.release()->DeleteWithItems(MarkItem);
  EXPECT_EQ(Get('h')->mark, 6);
}

TEST_P(AnyContainerTest, CursorsStandOnOneItemOrOnNone) {
  const auto container = Make("abcd");
  const std::unique_ptr<LumoCursor> cursor(container->NewCursor());
  // Where the cursor stands: before the first item, on the first, on the last, after the last.
  const auto getFlags = [&] {
    const bool flags[] = {cursor->IsBeforeFirstItem(), cursor->IsOnFirstItem(),
                          cursor->IsOnLastItem(), cursor->IsAfterLastItem()};
    std::string text;
    for (const bool flag : flags) text += flag ? '1' : '0';
    return text;
  };
  EXPECT_EQ(getFlags(), "1001");
  cursor->Increment();
  cursor->Decrement();
  EXPECT_EQ(getFlags(), "1001");
  EXPECT_EQ(cursor->GetItem(), nullptr);
  cursor->ResetOnFirstItem();
  EXPECT_EQ(getFlags(), "0100");
  cursor->Decrement();
  EXPECT_EQ(getFlags(), "1000");
  std::string names;
  for (cursor->ResetOnLastItem(); !cursor->IsBeforeFirstItem(); cursor->Decrement()) {
    names += static_cast<Item*>(cursor->GetItem())->name;
  }
  EXPECT_EQ(names, "dcba");
  cursor->ResetOnLastItem();
  EXPECT_EQ(getFlags(), "0010");
  cursor->Increment();
  EXPECT_EQ(getFlags(), "0001");
  cursor->ResetInPosition(3);
  EXPECT_EQ(cursor->GetItem(), Get('c'));
  cursor->ResetOnItem(Get('b'));
  EXPECT_EQ(cursor->GetItem(), Get('b'));
  container->RemoveItems();
  cursor->ResetOnFirstItem();
  EXPECT_EQ(getFlags(), "1001");
}

TEST_P(AnyContainerTest, CursorsRemoveInBothDirections) {
  const std::string all = "abcdefghijklmnopqrstuvwxyz";
  const auto container = Make(all.c_str());
  const std::unique_ptr<LumoCursor> cursor(container->NewCursor());
  std::string visited;
  for (cursor->ResetOnFirstItem(); !cursor->IsAfterLastItem();) {
    visited += static_cast<Item*>(cursor->GetItem())->name;
    if (IsOdd(cursor->GetItem())) {
      cursor->RemoveItemAndIncrement();
    } else {
      cursor->Increment();
    }
  }
  EXPECT_EQ(visited, all);
  EXPECT_EQ(Names(*container), "bdfhjlnprtvxz");
  cursor->ResetOnItem(Get('p'));
  for (; !cursor->IsBeforeFirstItem(); cursor->RemoveItemAndDecrement()) {
  }
  EXPECT_EQ(Names(*container), "rtvxz");
  cursor->ResetOnFirstItem();
  cursor->RemoveItemAndDecrement();
  EXPECT_TRUE(cursor->IsBeforeFirstItem());
  for (cursor->ResetOnFirstItem(); !cursor->IsAfterLastItem(); cursor->RemoveItemAndIncrement()) {
  }
  EXPECT_TRUE(container->IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(All, AnyContainerTest, testing::Values(0, 1, 2));

using LumoArrayTest = ContainersTest;

TEST_F(LumoArrayTest, SlotsMayBeEmpty) {
  LumoArray array(3);
  FillSlots(array, "a.b");
  EXPECT_EQ(array.GetNumberOfItems(), 2);
  EXPECT_EQ(array.GetNthItem(2), Get('b'));
  EXPECT_EQ(array.GetNthItem(0), Get('a'));  // slot 0 as it is
  EXPECT_EQ(array.GetIndexOfNthItem(2), 2);
  EXPECT_EQ(array.GetIndexOfNthItem(3), -1);
  array.SetItem(0, nullptr);
  EXPECT_EQ(array.GetNumberOfItems(), 1);
  EXPECT_EQ(array.GetNthItem(0), nullptr);
  array.SetItem(2, Get('c'));  // one for another
  array.SetItem(1, nullptr);
  EXPECT_EQ(array.GetNumberOfItems(), 1);
  EXPECT_EQ(array.GetIndexOfFirstItem(), 2);

  // Insertion counts items, not slots, and shifts what follows.
  FillSlots(array, "a.b");
  array.InsertItemLast(Get('c'));
  EXPECT_EQ(Slots(array, 5), "a.cb.");
  array.InsertItemFirst(Get('d'));
  array.InsertItemAtIndex(9, Get('e'));  // beyond the number of items
  EXPECT_EQ(Slots(array, 6), "da.cb.");
  EXPECT_EQ(array.RemoveItem(1), Get('a'));
  EXPECT_EQ(Slots(array, 6), "d..cb.");
  EXPECT_EQ(array.RemoveItemAtIndex(1), nullptr);
  EXPECT_EQ(array.RemoveItemAtIndex(0), Get('d'));
  EXPECT_EQ(Slots(array, 4), ".cb.");
  EXPECT_EQ(array.GetNumberOfItems(), 2);
}

TEST_F(LumoArrayTest, GrowsAndShrinksByWholeIncrements) {
  LumoArray array;
  EXPECT_EQ(array.GetSize(), 1024);
  array.SetItem(5000, Get('a'));
  EXPECT_EQ(array.GetSize(), 5120);
  EXPECT_EQ(array.GetItem(5000), Get('a'));
  EXPECT_EQ(array.GetNumberOfItems(), 1);
  EXPECT_EQ(array.GetItem(5120), nullptr);
  LumoArray small(10);
  FillSlots(small, "a.......h");
  const struct {
    bool expands;
    int n;
    int size;
  } steps[] = {{true, 9, 10},   {true, 10, 20},  {true, 39, 40},  {false, 35, 40},
               {false, 25, 30}, {false, 20, 30}, {false, 19, 20}, {false, 99, 20},
               {false, 5, 10},  {false, 0, 10},  {false, -1, 0},  {true, 0, 10}};
  std::string numbersOfItems;
  for (const auto& [expands, n, size] : steps) {
    if (expands) {
      small.Expand(n);
    } else {
      small.Shrink(n);
    }
    EXPECT_EQ(small.GetSize(), size) << n;
    numbersOfItems += std::to_string(small.GetNumberOfItems());
  }
  EXPECT_EQ(numbersOfItems, "222222222200");
}

TEST_F(LumoArrayTest, MovesSlots) {
  LumoArray array(16);
  FillSlots(array, "a.b..c.d");
  const std::unique_ptr<LumoArray> copy(array.Copy());
  array.CompactBlockLeft(1, 5);
  EXPECT_EQ(Slots(array, 8), "abc....d");
  array.CompactBlockRight(0, 4);
  EXPECT_EQ(Slots(array, 8), ".abc...d");
  array.CompactLeft();
  EXPECT_EQ(Slots(array, 8), "abcd....");
  array.CompactRight();
  EXPECT_EQ(Slots(array, 16), "............abcd");
  array.SwapItems(0, 13);
  EXPECT_EQ(Slots(array, 16), "b...........a.cd");
  array.ShiftBlockLeft(12, 4, 10);
  EXPECT_EQ(Slots(array, 16), "b.a.cd..........");
  array.ShiftBlockRight(2, 4, 1);
  EXPECT_EQ(Slots(array, 8), "b..a.cd.");
  array.RemoveItems(3, 3);
  EXPECT_EQ(Slots(array, 8), "b.....d.");
  EXPECT_EQ(array.GetNumberOfItems(), 2);
  LumoArrayCursor one(&array), two(&array);
  one.ResetOnLastItem();
  two.ResetOnCursor(&one);
  two.Decrement();
  one.ExchangeItems(&two);
  one.SubstituteItemForItem(Get('z'));
  EXPECT_EQ(Slots(array, 8), "d.....z.");
  EXPECT_EQ(Slots(*copy, 8), "a.b..c.d");
  EXPECT_EQ(copy->GetNumberOfItems(), 4);
}

TEST_F(LumoArrayTest, PushesPopsAndSortsStably) {
  LumoArray array(32);
  for (const char c : {'a', 'b', 'x'}) array.PushItem(Get(c));  // as a stack
  array.PushItem(nullptr);
  EXPECT_EQ(array.PopItem(), Get('x'));
  EXPECT_EQ(Slots(array, 3), "ab.");
  FillSlots(array, "f.ce.adb.g");
  for (const char c : {'a', 'c', 'e', 'g'}) Get(c)->key = 1;
  for (const char c : {'b', 'd', 'f'}) Get(c)->key = 0;
  array.SortBlock(1, 6, CompareKeys);  // .ce.ad
  EXPECT_EQ(Slots(array, 10), "fdcea..b.g");
  array.Sort(CompareKeys);
  EXPECT_EQ(Slots(array, 10), "fdbceag...");
}

using LumoListTest = ContainersTest;

TEST_F(LumoListTest, InsertsAndReachesAnywhere) {
  LumoList list(2, Get('b'), Get('c'));  // a stack at its head, a queue at its end
  list.Push(Get('a'));
  list.Push(Get('z'));
  list.EnQueue(Get('d'));
  EXPECT_EQ(list.Pop(), Get('z'));
  EXPECT_EQ(list.GetHead(), Get('a'));
  list.RemoveLastItem();
  const int two = 2, none = 99;
  EXPECT_EQ(list.GetNthItem(-1), Get('c'));
  EXPECT_EQ(list.GetNthItem(-3), Get('a'));
  for (const int n : {0, 4, -4}) EXPECT_EQ(list.GetNthItem(n), nullptr);
  list.InsertItemBefore(MatchKey, &two, Get('x'));
  list.InsertItemAfter(MatchKey, &two, Get('y'));
  list.InsertItemAfter(MatchKey, &none, Get('z'));
  EXPECT_EQ(Names(list), "axbyc");
  list.InsertItemInPosition(Get('p'), 1);
  list.InsertItemInPosition(Get('q'), 3);
  list.InsertItemAfter(list.GetLastCell(), Get('r'));
  list.InsertItemBefore(list.GetFirstCell(), Get('o'));
  EXPECT_EQ(Names(list), "opaqxbycr");
  const std::unique_ptr<LumoList> range(list.ExtractRange(3, 5));
  EXPECT_EQ(Names(*range), "aqx");
  EXPECT_EQ(Names(list), "opbycr");
  list.Append(range.get());
  EXPECT_EQ(Names(list), "opbycraqx");
  EXPECT_EQ(Names(*range), "aqx");
  list.Reverse();
  EXPECT_EQ(Names(list), "xqarcybpo");
  EXPECT_EQ(list.GetNthItem(-1), Get('o'));
  EXPECT_EQ(list.GetNthItem(-9), Get('x'));  // the links backwards too
  Fill(list, "q");
  list.RemoveItem(Get('q'));  // the first of two
  EXPECT_EQ(Names(list), "xarcybpoq");
}

TEST_F(LumoListTest, SortsAndBuildsSets) {
  LumoList list;
  Fill(list, "hcfabgde");
  list.QuickSort(CompareKeys);
  EXPECT_EQ(Names(list), "abcdefgh");
  EXPECT_EQ(list.GetNthItem(-8), Get('a'));
  list.Reverse();
  list.QuickSort(GetKey, CompareInts);
  EXPECT_EQ(Names(list), "abcdefgh");

  LumoList left, right;
  Fill(left, "dbca");
  Fill(right, "ecfb");
  EXPECT_EQ(TakeNames(left.BuildUnion(&right)), "dbcaef");
  EXPECT_EQ(TakeNames(left.BuildIntersection(&right)), "bc");
  EXPECT_EQ(TakeNames(left.BuildDifference(&right)), "da");
  EXPECT_EQ(TakeNames(left.BuildLinearUnion(&right, GetMark, 7)), "dbcaef");
  EXPECT_EQ(TakeNames(left.BuildLinearIntersection(&right, GetMark, 7)), "bc");
  EXPECT_EQ(TakeNames(left.BuildLinearDifference(&right, GetMark, 7)), "da");
  EXPECT_EQ(Names(left) + Names(right), "dbcaecfb");
}

using LumoAVLTreeTest = ContainersTest;

TEST_F(LumoAVLTreeTest, KeepsEqualItemsInTheOrderOfInsertion) {
  LumoAVLTree tree(CompareKeys);
  for (const char c : {'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h'}) Get(c)->key = 5;
  Fill(tree, "abczdefgh");
  EXPECT_EQ(Names(tree), "abcdefghz");
  const Item equal{5, '=', 0};
  tree.RemoveItem(&equal);  // some item that compares equal
  EXPECT_EQ(tree.GetNumberOfItems(), 8);
  EXPECT_FALSE(tree.DoesContainItem(&equal));
  const Item absent{6, '6', 0};
  tree.RemoveItem(&absent);
  EXPECT_EQ(tree.GetNumberOfItems(), 8);
}

TEST_F(LumoAVLTreeTest, CursorsFindTheVeryItemAmongItsEquals) {
  LumoAVLTree tree(CompareKeys);
  for (const char c : {'a', 'b', 'c', 'd', 'e'}) Get(c)->key = 5;
  Fill(tree, "abcde");
  const std::unique_ptr<LumoCursor> cursor(tree.NewCursor());
  for (const char c : {'a', 'b', 'c', 'd', 'e'}) {
    cursor->ResetOnItem(Get(c));
    EXPECT_EQ(cursor->GetItem(), Get(c)) << c;
  }
}

TEST_F(LumoAVLTreeTest, BuildsSetsInOrder) {
  LumoAVLTree left(CompareKeys), right(CompareKeys);
  Fill(left, "dbca");
  Fill(right, "fcbe");
  EXPECT_EQ(TakeNames(left.BuildUnion(&right)), "abcdef");
  EXPECT_EQ(TakeNames(left.BuildIntersection(&right)), "bc");
  EXPECT_EQ(TakeNames(left.BuildDifference(&right)), "ad");
  EXPECT_EQ(TakeNames(left.CopyAsList()), "abcd");
}

// Against a sorted vector in which a new item goes behind its equals, over random insertions,
// removals by order and removals through cursors, with many equal keys.
TEST(LumoAVLTree, AgreesWithASortedVector) {
  std::mt19937 random(20240229);
  std::vector<Item> items(3000);
  for (Item& item : items) item.key = static_cast<int>(random() % 200);
  LumoAVLTree tree(CompareKeys);
  std::vector<const void*> expected;
  const auto isBefore = [](const void* a, const void* b) { return CompareKeys(a, b) < 0; };
  const std::unique_ptr<LumoCursor> cursor(tree.NewCursor());
  for (std::size_t i = 0; i < items.size(); ++i) {
    tree.InsertItem(&items[i]);
    expected.insert(std::upper_bound(expected.begin(), expected.end(), &items[i], isBefore),
                    &items[i]);
    const auto place = static_cast<std::ptrdiff_t>(random() % expected.size());
    const auto n = static_cast<int>(place) + 1;
    switch (random() % 6) {
      case 0:  // by order: whichever of the equals goes, it is one of them
      {
        const Item key{static_cast<int>(random() % 200), '?', 0};
        const auto [from, to] = std::equal_range(expected.begin(), expected.end(), &key, isBefore);
        const void* removed = tree.RemoveItem(&key);
        ASSERT_EQ(removed == nullptr, from == to);
        if (removed == nullptr) break;
        const auto found = std::find(from, to, removed);
        ASSERT_NE(found, to);
        expected.erase(found);
        break;
      }
      case 1:
        ASSERT_EQ(tree.RemoveNthItem(n), expected[static_cast<std::size_t>(place)]);
        expected.erase(expected.begin() + place);
        break;
      case 2:  // through a cursor, which then stands on the neighbour
      case 3: {
        const bool forwards = random() % 2 == 0;
        cursor->ResetInPosition(n);
        ASSERT_EQ(forwards ? cursor->RemoveItemAndIncrement() : cursor->RemoveItemAndDecrement(),
                  expected[static_cast<std::size_t>(place)]);
        expected.erase(expected.begin() + place);
        const std::ptrdiff_t next = forwards ? place : place - 1;
        const bool isOutside = next < 0 || next == std::ssize(expected);
        ASSERT_EQ(forwards ? cursor->IsAfterLastItem() : cursor->IsBeforeFirstItem(), isOutside);
        ASSERT_EQ(cursor->GetItem(),
                  isOutside ? nullptr : expected[static_cast<std::size_t>(next)]);
        break;
      }
      default:
        break;
    }
    ASSERT_EQ(tree.GetNumberOfItems(), std::ssize(expected));
    if (i % 50 != 0) continue;
    std::vector<const void*> actual;
    for (const void* item : LumoItems<void>(tree)) actual.push_back(item);
    ASSERT_EQ(actual, expected);
    actual.clear();
    for (cursor->ResetOnLastItem(); !cursor->IsBeforeFirstItem(); cursor->Decrement()) {
      actual.insert(actual.begin(), cursor->GetItem());
    }
    ASSERT_EQ(actual, expected);
  }
  ASSERT_GT(tree.GetNumberOfItems(), 500);
}

namespace {
int numberOfComparisons = 0;
int CountingCompareKeys(const void* a, const void* b) {
  ++numberOfComparisons;
  return CompareKeys(a, b);
}
}  // namespace

// An AVL tree of height h has at least N(h) = N(h - 1) + N(h - 2) + 1 items, and the deepest item
// takes as many comparisons to find as the tree is high.
TEST(LumoAVLTree, StaysBalanced) {
  std::mt19937 random(1);
  std::vector<Item> items(300);
  LumoAVLTree tree(CompareKeys);
  const auto expectBalance = [&] {
    int height = 0;
    for (const Item* item : LumoItems<Item>(tree)) {
      numberOfComparisons = 0;
      ASSERT_EQ(tree.LookForItem(CountingCompareKeys, item), item);
      height = std::max(height, numberOfComparisons);
    }
    int fewest = 0;
    for (int h = 0, below = 0; h < height; ++h) below = std::exchange(fewest, fewest + below + 1);
    ASSERT_LE(fewest, tree.GetNumberOfItems());
  };
  for (int round = 0; round < 5; ++round) {
    for (std::size_t i = 0; i < items.size(); ++i) items[i].key = static_cast<int>(i);
    if (round > 0) std::shuffle(items.begin(), items.end(), random);
    for (Item& item : items) tree.InsertItem(&item), expectBalance();
    for (int n = 300; n > 0; --n) {
      tree.RemoveNthItem(round == 0 ? n
                                    : 1 + static_cast<int>(random() % static_cast<unsigned>(n)));
      expectBalance();
    }
  }
}
