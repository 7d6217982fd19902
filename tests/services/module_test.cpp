#include "services/module.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <vector>

#include "services/messages.h"

namespace {

using namespace orba::services;

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
  set_exit_handler([](int exit_code) { order.push_back(-exit_code); });
  for (int i = 0; i <= capacity(); ++i) add_unload_action(GetParam(), note, numbers + i);
  set_exit_handler(nullptr);
  std::vector<int> expected = {-3};  // the last found no room, and its handler went on
  for (int i = capacity(); i-- > 0;) expected.push_back(i);
  run_unload_actions(GetParam());
  run_unload_actions(GetParam());
  EXPECT_EQ(order, expected);
}

TEST_P(UnloadActions, AFullListEndsTheProcess) {
  EXPECT_EXIT(
      {
        for (int i = 0; i <= capacity(); ++i) add_unload_action(GetParam(), note, numbers);
      },
      testing::ExitedWithCode(3), "");
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

}  // namespace
