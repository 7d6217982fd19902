#include "services/module.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <vector>

#include "services/messages.h"
#include "tests/support/process.h"

namespace {

using namespace orba::services;

std::vector<int> order;
int numbers[40];
void note(void* argument) {
  order.push_back(static_cast<int>(static_cast<int*>(argument) - numbers));
}

TEST(UnloadActions, LastAddedRunsFirstAndOnce) {
  for (const auto& [list, capacity] :
       {std::pair{UnloadList::memory, 32}, {UnloadList::threads, 8}}) {
    const auto fill = [&, which = list, room = capacity] {
      for (int i = 0; i <= room; ++i) add_unload_action(which, note, numbers + i);
    };
    EXPECT_EXIT(fill(), testing::ExitedWithCode(3), "");
    order.clear();
    set_exit_handler([](int exit_code) { order.push_back(-exit_code); });
    fill();
    set_exit_handler(nullptr);
    std::vector<int> expected = {-3};  // the last found no room, and its handler went on
    for (int i = capacity; i-- > 0;) expected.push_back(i);
    run_unload_actions(list);
    run_unload_actions(list);
    EXPECT_EQ(order, expected);
  }
}

TEST(UnloadActions, ProcessDetachRunsBothListsOnce) {
  if (!orba::test::in_process_with("")) return;
  add_unload_action(UnloadList::threads, note, numbers + 1);
  add_unload_action(UnloadList::memory, note, numbers + 2);
  add_unload_action(UnloadList::memory, note, numbers + 3);
  on_process_detach();
  add_unload_action(UnloadList::memory, note, numbers + 4);
  on_process_detach();
  EXPECT_EQ(order, (std::vector{3, 2, 1}));
}

}  // namespace
