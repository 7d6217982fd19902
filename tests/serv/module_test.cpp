#include "serv/module.h"

#include <gtest/gtest.h>
#include <string.h>
#include <unistd.h>

#include <vector>

#include "serv/messages.h"
#include "serv/platform/platform.h"

namespace {

using namespace orba::serv;

std::vector<int> order;
int numbers[40];
void note(void* argument) {
  order.push_back(static_cast<int>(static_cast<int*>(argument) - numbers));
}

class UnloadActions : public testing::TestWithParam<UnloadList> {
 protected:
  void SetUp() override { order.clear(); }
  int capacity() const { return GetParam() == UnloadList::memory ? 32 : 8; }
};

TEST_P(UnloadActions, LastAddedRunsFirstAndOnce) {
  for (int i = 0; i < capacity(); ++i) add_unload_action(GetParam(), note, numbers + i);
  run_unload_actions(GetParam());
  ASSERT_EQ(order.size(), static_cast<size_t>(capacity()));
  for (int i = 0; i < capacity(); ++i) EXPECT_EQ(order[i], capacity() - 1 - i);
  run_unload_actions(GetParam());
  EXPECT_EQ(order.size(), static_cast<size_t>(capacity()));
}

TEST_P(UnloadActions, AFullListEndsTheProcess) {
  EXPECT_EXIT(
      {
        for (int i = 0; i < capacity(); ++i) add_unload_action(GetParam(), note, numbers + i);
        add_unload_action(GetParam(), note, numbers);
      },
      testing::ExitedWithCode(3), "");
}

TEST_P(UnloadActions, AHandlerThatReturnsLosesTheAction) {
  set_exit_handler([](int exit_code) { order.push_back(-exit_code); });
  for (int i = 0; i <= capacity(); ++i) add_unload_action(GetParam(), note, numbers + i);
  set_exit_handler(nullptr);
  ASSERT_EQ(order, std::vector<int>{-3});
  run_unload_actions(GetParam());
  EXPECT_EQ(order[1], capacity() - 1);
}

INSTANTIATE_TEST_SUITE_P(Lists, UnloadActions,
                         testing::Values(UnloadList::memory, UnloadList::threads));

TEST(ModuleDeathTest, ProcessDetachRunsBothListsOnce) {
  EXPECT_EXIT(
      {
        order.clear();
        add_unload_action(UnloadList::threads, note, numbers + 1);
        add_unload_action(UnloadList::memory, note, numbers + 2);
        add_unload_action(UnloadList::memory, note, numbers + 3);
        on_process_detach();
        add_unload_action(UnloadList::memory, note, numbers + 4);
        on_process_detach();
        _exit(order == std::vector<int>{3, 2, 1} ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

TEST(Platform, PrivateHeapGivesZeroedBlocks) {
  EXPECT_FALSE(platform::loaded_as_module());
  void* blocks[8];
  for (void*& block : blocks) {
    block = platform::private_heap_allocate(48);
    ASSERT_NE(block, nullptr);
    for (int i = 0; i < 48; ++i) EXPECT_EQ(static_cast<char*>(block)[i], 0);
    memset(block, 0xFF, 48);
  }
  for (const int i : {3, 0, 7}) platform::private_heap_free(blocks[i]);
  platform::private_heap_free(nullptr);
  platform::destroy_private_heap();  // the leak check sees any block that was forgotten
  void* again = platform::private_heap_allocate(48);
  ASSERT_NE(again, nullptr);
  platform::private_heap_free(again);
}

}  // namespace
