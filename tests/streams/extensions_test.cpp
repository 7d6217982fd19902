// Data that hangs on streams: private blocks, blocks shared by key, their counts. Leaks and double
// frees are the address sanitizer's to find.

#include "statistics/streams/extensions.h"

#include <gtest/gtest.h>

#include <cstring>

#include "services/memory.h"
#include "tests/streams/streams.h"

namespace orba::test {
namespace {

using namespace statistics;

constexpr size_t kCapacity = 127;  // blocks that streams can share at a time

void* block(const std::string& content) {
  void* data = services::allocate(content.size(), kStreamAlignment);
  std::memcpy(data, content.data(), content.size());
  return data;
}

std::string content(const StreamExtension* record) {
  return {static_cast<const char*>(record->data), record->size};
}

const StreamExtension* head(const Stream& stream) {
  return static_cast<StreamState*>(stream)->extensions;
}

Stream new_stream() { return Stream(RAU_BRNG_MCG31M1, {1}); }

void* add(Stream& stream, uint32_t id, const SharedKey* key, const std::string& text) {
  void* data = block(text);
  EXPECT_EQ(add_extension(*static_cast<StreamState*>(stream), id, key, data,
                          static_cast<uint32_t>(text.size())),
            0);
  return data;
}

std::vector<uint32_t> ids(const Stream& stream) {
  std::vector<uint32_t> list;
  for (const StreamExtension* e = head(stream); e != nullptr; e = e->next) list.push_back(e->id);
  return list;
}

// True when the table holds the key: a further block of that key is then not taken.
bool shared(const SharedKey& key) {
  Stream probe = new_stream();
  void* own = add(probe, 1, &key, "probe");
  const bool known = head(probe)->data != own;
  if (known) services::free_memory(own);
  return known;
}

TEST(Extensions, ListOfPrivateBlocks) {
  Stream stream = new_stream();
  add(stream, 3, nullptr, "three");
  add(stream, 7, nullptr, "seven!");
  const SharedKey zero = {};
  void* last = add(stream, 3, &zero, "third");
  EXPECT_EQ(ids(stream), (std::vector<uint32_t>{3, 7, 3}));
  EXPECT_EQ(find_extension(*stream, 3), last);
  EXPECT_EQ(find_extension(*stream, 8), nullptr);
  EXPECT_EQ(rauGetStreamSize(stream), 32 + 3 * 24 + 5 + 6 + 5);

  Stream other = stream.copy();
  EXPECT_EQ(ids(other), (std::vector<uint32_t>{3, 7, 3}));  // in reverse order
  EXPECT_EQ(content(head(other)), "three");
  EXPECT_NE(head(other)->data, head(stream)->next->next->data);
  EXPECT_EQ(rauGetStreamSize(other), rauGetStreamSize(stream));

  remove_extension(*stream, 3);
  EXPECT_EQ(ids(stream), (std::vector<uint32_t>{7}));
  remove_extension(*stream, 3);
  remove_extension(*stream, 7);
  EXPECT_TRUE(ids(stream).empty());
  EXPECT_EQ(content(head(other)->next->next), "third");
}

TEST(Extensions, CopiesAreInReverseOrder) {
  Stream stream = new_stream();
  for (uint32_t id = 1; id <= 5; ++id) add(stream, id, nullptr, std::to_string(id));
  EXPECT_EQ(ids(stream), (std::vector<uint32_t>{5, 4, 3, 2, 1}));
  Stream once = stream.copy();
  EXPECT_EQ(ids(once), (std::vector<uint32_t>{1, 2, 3, 4, 5}));
  EXPECT_EQ(ids(once.copy()), ids(stream));

  Stream dest = new_stream();
  add(dest, 9, nullptr, "goes");
  ASSERT_EQ(rauCopyStreamState(dest, stream), 0);
  EXPECT_EQ(ids(dest), ids(once));
  ASSERT_EQ(rauCopyStreamState(dest, dest), 0);
  EXPECT_EQ(ids(dest), ids(once));
}

TEST(Extensions, AnEmptyBlock) {
  Stream stream = new_stream();
  ASSERT_EQ(add_extension(*static_cast<StreamState*>(stream), 4, nullptr, nullptr, 0), 0);
  Stream other = stream.copy();
  EXPECT_EQ(ids(other), (std::vector<uint32_t>{4}));
  EXPECT_EQ(head(other)->data, nullptr);
}

TEST(SharedBlocks, LiveAsLongAsOneHolder) {
  const SharedKey key = make_shared_key(5);
  EXPECT_EQ(key.words[1], 5);
  Stream first = new_stream();
  void* data = add(first, 9, &key, "shared");
  Stream second = first.copy(), third = new_stream();
  ASSERT_EQ(rauCopyStreamState(third, second), 0);
  EXPECT_EQ(find_extension(*second, 9), data);
  EXPECT_EQ(find_extension(*third, 9), data);
  // A holder by key, whose own block is not taken.
  Stream fourth = new_stream();
  void* own = add(fourth, 9, &key, "refuse");
  EXPECT_EQ(find_extension(*fourth, 9), data);
  services::free_memory(own);

  EXPECT_NE(make_shared_key(5), key);
  rauDeleteStream(first.address());
  remove_extension(*fourth, 9);
  rauDeleteStream(second.address());
  EXPECT_EQ(content(head(third)), "shared");
  EXPECT_TRUE(shared(key));
  ASSERT_EQ(rauCopyStreamState(third, fourth), 0);
  EXPECT_EQ(head(third), nullptr);
  EXPECT_FALSE(shared(key));
}

TEST(SharedBlocks, BothWordsOfAKeyCount) {
  const SharedKey key = make_shared_key(5), other = {{key.words[0], 6}}, half = {{0, 5}};
  Stream stream = new_stream();
  void* one = add(stream, 1, &key, "1");
  void* two = add(stream, 2, &other, "2");
  void* three = add(stream, 3, &half, "3");
  EXPECT_EQ(find_extension(*stream, 1), one);
  EXPECT_EQ(find_extension(*stream, 2), two);
  EXPECT_EQ(find_extension(*stream, 3), three);
}

// The 128th block is private: copies are copied.
TEST(SharedBlocks, FullTable) {
  Stream holder = new_stream();
  std::vector<SharedKey> keys;
  for (uint32_t i = 0; i < kCapacity; ++i) {
    keys.push_back(make_shared_key(i + 1));
    add(holder, i, &keys[i], std::to_string(i));
  }
  const SharedKey late = make_shared_key(1000);
  Stream stream = new_stream();
  add(stream, 200, &late, "late");
  EXPECT_EQ(head(stream)->key, SharedKey{});
  Stream other = stream.copy();
  EXPECT_NE(find_extension(*other, 200), find_extension(*stream, 200));
  EXPECT_EQ(content(head(other)), "late");
  // A known key is not shared by attaching any more, but copies of its holders share on.
  add(stream, 201, &keys[5], "own");
  EXPECT_EQ(content(head(stream)), "own");
  Stream all = holder.copy();
  for (uint32_t i = 0; i < kCapacity; ++i) {
    EXPECT_EQ(find_extension(*all, i), find_extension(*holder, i));
  }
  rauDeleteStream(holder.address());
  for (uint32_t i = 0; i < kCapacity; ++i) {
    const auto* text = static_cast<const char*>(find_extension(*all, i));
    EXPECT_EQ(std::string(text, std::to_string(i).size()), std::to_string(i));
  }
  // Blocks go from the middle, and room comes back.
  for (const uint32_t i : {0u, 126u, 60u, 61u}) remove_extension(*all, i);
  for (uint32_t i = 0; i < kCapacity; ++i) {
    EXPECT_EQ(shared(keys[i]), i != 0 && i != 126 && i != 60 && i != 61) << i;
  }
  add(stream, 202, &late, "in time");
  EXPECT_EQ(stream.copy().at<StreamExtension*>(8)->key, SharedKey{});  // the oldest of stream
  EXPECT_TRUE(shared(late));
}

}  // namespace
}  // namespace orba::test
