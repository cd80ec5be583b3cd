#include <array>
#include <memory>
#include <random>

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

int numberOfComparisons = 0;
int CompareKeys(const void* a, const void* b) {
  ++numberOfComparisons;
  return static_cast<const Item*>(a)->key - static_cast<const Item*>(b)->key;
}
int MatchKey(const void* item, const void* key) {
  return static_cast<const Item*>(item)->key - *static_cast<const int*>(key);
}
bool IsOdd(const void* item) { return static_cast<const Item*>(item)->key % 2 != 0; }
void* GetKey(void* item) { return &static_cast<Item*>(item)->key; }
int* GetMark(void* item) { return &static_cast<Item*>(item)->mark; }
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
  const int three = 3, none = 99;
  EXPECT_EQ(container->GetItemPosition(Get('d')), 4);
  EXPECT_EQ(container->SearchItem(MatchKey, &three), 3);
  EXPECT_EQ(container->LookForItem(MatchKey, &none), nullptr);
  EXPECT_EQ(container->CountItems(IsOdd) + container->CountItems(MatchKey, &three), 4);
  const Item sameKey{3, 'x', 0};
  EXPECT_FALSE(container->DoesContainItem(&sameKey));  // identity
  LumoList odd;
  container->CollectItems(IsOdd, &odd);
  EXPECT_EQ(Names(odd), "ace");
  container->DeleteItems(MatchKey, &three, MarkItem);
  EXPECT_EQ(Get('c')->mark, 1);
  EXPECT_EQ(Names(*container), "abde");
  for (int i = 0; i < 5; ++i) container->RemoveLastItem();
  EXPECT_EQ(container->RemoveFirstItem(), nullptr);
  Fill(*container, "xy");
  container->DeleteItems(MarkItem);
  EXPECT_EQ(container->GetFirstItem(), nullptr);
  EXPECT_EQ(Get('x')->mark + Get('y')->mark, 2);
}

TEST_P(AnyContainerTest, SetOperations) {
  auto left = Make("abcd");
  const auto right = Make("cdef");
  EXPECT_EQ(left->CountItemsOfUnion(right.get()), 6);
  EXPECT_EQ(left->CountItemsOfIntersection(right.get()), 2);
  EXPECT_EQ(left->CountItemsOfDifference(right.get()), 2);
  left->Add(right.get());
  EXPECT_EQ(Names(*left), "abcdef");
  EXPECT_FALSE(left->HasSameItems(right.get()));
  left->Select(right.get());
  EXPECT_TRUE(left->HasSameItems(right.get()));
  left->Subtract(Make("ae").get());
  EXPECT_EQ(Names(*left), "cdf");
  left->RemoveItems(Make("fz").get());
  left->DeleteItems(Make("dx").get(), MarkItem);
  EXPECT_EQ(Get('d')->mark, 1);
  EXPECT_EQ(Get('x')->mark, 0);  // it was not in the container
  left = Make("c");
  left->InsertItems(Make("gh").get());
  left->Apply(
      [](void* item, void* by) { static_cast<Item*>(item)->mark += *static_cast<int*>(by); },
      GetKey(Get('e')));
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
  const auto expect = [&](const std::string& flags) {
    const bool found[] = {cursor->IsBeforeFirstItem(), cursor->IsOnFirstItem(),
                          cursor->IsOnLastItem(), cursor->IsAfterLastItem()};
    for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(found[i], flags[i] == '1') << flags;
  };
  expect("1001");
  cursor->Increment();
  expect("1001");
  cursor->ResetOnFirstItem();
  expect("0100");
  cursor->Decrement();
  expect("1000");
  cursor->ResetOnLastItem();
  expect("0010");
  cursor->Increment();
  expect("0001");
  container->RemoveItems();
  cursor->ResetOnFirstItem();
  expect("1001");
}

// Against a vector, over random insertions and removals, many of them of items with equal keys,
// which a tree keeps in the order of their insertion.
TEST_P(AnyContainerTest, AgreesWithAVector) {
  std::mt19937 random(20240229);
  std::vector<Item> items(3000);
  for (Item& item : items) item.key = 2 * static_cast<int>(random() % 1000);
  const auto container = Make();
  const std::unique_ptr<LumoCursor> cursor(container->NewCursor());
  std::vector<const void*> expected;
  const auto isBefore = [](const void* a, const void* b) { return CompareKeys(a, b) < 0; };
  for (Item& item : items) {
    // An array counts items, not slots, to find the last place.
    if (GetParam() == 0) static_cast<LumoArray&>(*container).CompactLeft();
    container->InsertItem(&item);
    expected.insert(GetParam() < 2
                        ? expected.end()
                        : std::upper_bound(expected.begin(), expected.end(), &item, isBefore),
                    &item);
    const auto place = expected.begin() + static_cast<long>(random() % expected.size());
    const auto n = static_cast<int>(place - expected.begin()) + 1;
    ASSERT_EQ(container->GetNthItem(n), *place);
    cursor->ResetOnItem(*place);
    ASSERT_EQ(cursor->GetItem(), *place);
    switch (random() % 6) {
      case 0: {  // a tree removes whichever of the equals
        const void* removed = container->RemoveItem(*place);
        ASSERT_EQ(CompareKeys(removed, *place), 0);
        expected.erase(std::find(expected.begin(), expected.end(), removed));
        break;
      }
      case 1:
        ASSERT_EQ(container->RemoveNthItem(n), *place);
        expected.erase(place);
        break;
      case 2: {  // through a cursor, which then stands on the neighbour
        const bool forwards = random() % 2 == 0;
        cursor->ResetInPosition(n);
        ASSERT_EQ(forwards ? cursor->RemoveItemAndIncrement() : cursor->RemoveItemAndDecrement(),
                  *place);
        const auto next = expected.erase(place);
        const bool isOutside = next == (forwards ? expected.end() : expected.begin());
        ASSERT_EQ(forwards ? cursor->IsAfterLastItem() : cursor->IsBeforeFirstItem(), isOutside);
        ASSERT_EQ(cursor->GetItem(), isOutside ? nullptr : *(forwards ? next : next - 1));
        break;
      }
      default:
        break;
    }
    ASSERT_EQ(container->GetNumberOfItems(), std::ssize(expected));
    if (random() % 50 != 0) continue;
    std::vector<const void*> actual;
    for (const void* each : LumoItems<void>(*container)) actual.push_back(each);
    ASSERT_EQ(actual, expected);
    actual.clear();
    for (cursor->ResetOnLastItem(); !cursor->IsBeforeFirstItem(); cursor->Decrement()) {
      actual.insert(actual.begin(), cursor->GetItem());
    }
    ASSERT_EQ(actual, expected);
    // An AVL tree of height h has at least N(h) = N(h - 1) + N(h - 2) + 1 items, and a look for
    // what is not there, an odd key, takes as many comparisons as its path is long.
    int height = 0;
    for (Item absent{1, '?', 0}; GetParam() == 2 && absent.key < 2000; absent.key += 2) {
      numberOfComparisons = 0;
      ASSERT_EQ(container->LookForItem(CompareKeys, &absent), nullptr);
      height = std::max(height, numberOfComparisons);
    }
    int fewest = 0;
    for (int h = 0, below = 0; h < height; ++h) below = std::exchange(fewest, fewest + below + 1);
    ASSERT_LE(fewest, container->GetNumberOfItems());
  }
  ASSERT_GT(container->GetNumberOfItems(), 500);
}

INSTANTIATE_TEST_SUITE_P(All, AnyContainerTest, testing::Values(0, 1, 2));

using LumoArrayTest = ContainersTest;

TEST_F(LumoArrayTest, SlotsMayBeEmpty) {
  LumoArray array(3);
  FillSlots(array, "a.b");
  EXPECT_EQ(array.GetNthItem(2), Get('b'));
  EXPECT_EQ(array.GetNthItem(0), Get('a'));  // slot 0 as it is
  EXPECT_EQ(array.GetIndexOfNthItem(3), -1);
  // Insertion counts items, not slots, and shifts what follows.
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
  LumoArray array(10);
  FillSlots(array, "a.......h");
  const int sizes[][2] = {{9, 10},  {10, 20}, {39, 40},  // at least for slot n, then at most
                          {35, 40}, {25, 30}, {20, 30}, {19, 20}, {99, 20}, {5, 10}};
  for (int i = 0; i < 9; ++i) {
    i < 3 ? array.Expand(sizes[i][0]) : array.Shrink(sizes[i][0]);
    EXPECT_EQ(array.GetSize(), sizes[i][1]) << i;
  }
  EXPECT_EQ(Slots(array, 10), "a.......h.");
  array.Shrink(-1);
  EXPECT_EQ(array.GetSize() + array.GetNumberOfItems(), 0);
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
  list.RemoveLastItem();
  const int two = 2, none = 99;
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
  EXPECT_EQ(list.GetNthItem(-9), Get('x'));  // the links backwards too
}

TEST_F(LumoListTest, SortsAndBuildsSets) {
  LumoList list;
  Fill(list, "hcfabgde");
  list.QuickSort(CompareKeys);
  EXPECT_EQ(Names(list), "abcdefgh");
  list.Reverse();
  list.QuickSort(GetKey, [](const void* a, const void* b) {
    return *static_cast<const int*>(a) - *static_cast<const int*>(b);
  });
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
  LumoAVLTree leftTree(CompareKeys), rightTree(CompareKeys);
  Fill(leftTree, "dbca");
  Fill(rightTree, "fcbe");
  EXPECT_EQ(TakeNames(leftTree.BuildUnion(&rightTree)), "abcdef");
  EXPECT_EQ(TakeNames(leftTree.BuildIntersection(&rightTree)), "bc");
  EXPECT_EQ(TakeNames(leftTree.BuildDifference(&rightTree)), "ad");
  EXPECT_EQ(TakeNames(leftTree.CopyAsList()), "abcd");
}
