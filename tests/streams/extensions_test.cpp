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

std::string content(const StreamExtension* record) {
  return {static_cast<const char*>(record->data), record->size};
}

const StreamExtension* head(const Stream& stream) {
  return static_cast<StreamState*>(stream)->extensions;
}

Stream new_stream() { return Stream(RAU_BRNG_MCG31M1, {1}); }

void* add(Stream& stream, uint32_t id, const SharedKey* key, const std::string& text) {
  void* data = text.empty() ? nullptr : services::allocate(text.size(), kStreamAlignment);
  if (data != nullptr) std::memcpy(data, text.data(), text.size());
  EXPECT_EQ(add_extension(*static_cast<StreamState*>(stream), id, key, data,
                          static_cast<uint32_t>(text.size())),
            0);
  return data;
}

Words ids(const Stream& stream) {
  Words list;
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
  add(stream, 4, nullptr, "");
  EXPECT_EQ(ids(stream), (Words{4, 3, 7, 3}));
  EXPECT_EQ(find_extension(*stream, 3), last);
  EXPECT_EQ(find_extension(*stream, 8), nullptr);
  EXPECT_EQ(rauGetStreamSize(stream), 32 + 4 * 24 + 5 + 6 + 5);

  // Copies are in reverse order and have blocks of their own.
  Stream other = stream.copy(), dest = new_stream();
  add(dest, 9, nullptr, "goes");
  ASSERT_EQ(rauCopyStreamState(dest, stream), 0);
  ASSERT_EQ(rauCopyStreamState(dest, dest), 0);
  for (const Stream* copy : {&other, &dest}) {
    EXPECT_EQ(ids(*copy), (Words{3, 7, 3, 4}));
    EXPECT_EQ(content(head(*copy)), "three");
    EXPECT_EQ(rauGetStreamSize(*copy), rauGetStreamSize(stream));
  }
  EXPECT_EQ(ids(other.copy()), ids(stream));

  remove_extension(*stream, 3);
  EXPECT_EQ(ids(stream), (Words{4, 7}));
  remove_extension(*stream, 3);
  remove_extension(*stream, 4);
  remove_extension(*stream, 7);
  EXPECT_TRUE(ids(stream).empty());
  EXPECT_EQ(content(head(other)->next->next), "third");
  EXPECT_EQ(head(other)->next->next->next->data, nullptr);
}

TEST(SharedBlocks, LiveAsLongAsOneHolder) {
  const SharedKey key = make_shared_key(5);
  EXPECT_EQ(key.words[1], 5);
  Stream first = new_stream();
  void* data = add(first, 9, &key, "shared");
  Stream second = first.copy(), third = new_stream();
  ASSERT_EQ(rauCopyStreamState(third, second), 0);
  // A holder by key, whose own block is not taken; and other keys, of which both words count.
  Stream fourth = new_stream();
  void* own = add(fourth, 9, &key, "refuse");
  services::free_memory(own);
  for (const Stream* holder : {&second, &third, &fourth}) {
    EXPECT_EQ(find_extension(**holder, 9), data);
  }
  const SharedKey keys[] = {{{key.words[0], 6}}, {{0, 5}}};
  for (uint32_t i = 0; i < 2; ++i) {
    void* block = add(fourth, i, &keys[i], "other");
    EXPECT_EQ(find_extension(*fourth, i), block);
    remove_extension(*fourth, i);
  }
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
  for (const StreamExtension* e = head(all); e != nullptr; e = e->next) {
    EXPECT_EQ(content(e), std::to_string(e->id));
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
