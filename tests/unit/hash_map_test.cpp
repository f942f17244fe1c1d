// The iteration order of the string hash map decides the order of every
// printed list, so it is pinned here case by case.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "misc/hash_map.h"

using misc::KeyCompare;
using misc::StringHashMap;

namespace {

std::vector<std::string> keysInOrder(const StringHashMap<int>& a_map)
{
    std::vector<std::string> keys;
    for (const auto& entry : a_map)
        keys.push_back(entry.first);
    return keys;
}

long positionOf(const StringHashMap<int>& a_map, const std::string& a_key)
{
    long position = 0;
    for (const auto& entry : a_map) {
        if (entry.first == a_key)
            return position;
        ++position;
    }
    return -1;
}

} // namespace

TEST(HashMapTest, HashTakesBytesAsSignedAndWrapsAt32Bits)
{
    EXPECT_EQ(misc::hashString(""), 0u);
    EXPECT_EQ(misc::hashString("a"), 97u);
    EXPECT_EQ(misc::hashString("ab"), 5u * 97u + 98u);
    EXPECT_EQ(misc::hashString("\x80"), 4294967168u); // -128
    EXPECT_EQ(misc::hashString("\xff"), 4294967295u); // -1
    // 5^14 * 'z' overflows 32 bits: the value wraps, it does not saturate.
    std::uint32_t expected = 0;
    for (int i = 0; i < 20; ++i)
        expected = 5u * expected + 'z';
    EXPECT_EQ(misc::hashString(std::string(20, 'z').c_str()), expected);
}

TEST(HashMapTest, BucketCountsComeFromThePrimeList)
{
    EXPECT_EQ(misc::nextBucketCount(0), 5u);
    EXPECT_EQ(misc::nextBucketCount(100), 193u);
    EXPECT_EQ(misc::nextBucketCount(193), 193u);
    EXPECT_EQ(misc::nextBucketCount(194), 389u);
    EXPECT_EQ(misc::nextBucketCount(4294967291ul), 4294967291ul);
    EXPECT_EQ(StringHashMap<int>().bucketCount(), 193u);
}

TEST(HashMapTest, IteratesBucketsUpwardAndEachBucketFromItsHead)
{
    // "a" and "(Z" share bucket 97 (hashes 97 and 290); "b" is in bucket 98.
    StringHashMap<int> map;
    map["b"] = 1;
    map["a"] = 2;
    map["(Z"] = 3;
    EXPECT_EQ(keysInOrder(map), (std::vector<std::string>{"(Z", "a", "b"}));

    StringHashMap<int> reversed;
    reversed["(Z"] = 3;
    reversed["a"] = 2;
    EXPECT_EQ(keysInOrder(reversed), (std::vector<std::string>{"a", "(Z"}));

    // As signed bytes "\xff" lands in bucket 107, after "a" in 97; read as
    // unsigned it would come first (bucket 62).
    StringHashMap<int> high;
    high["\xff"] = 1;
    high["a"] = 2;
    EXPECT_EQ(keysInOrder(high), (std::vector<std::string>{"a", "\xff"}));
}

TEST(HashMapTest, ReassigningKeepsTheEntryInPlace)
{
    StringHashMap<int> map;
    map["a"] = 1;
    map["(Z"] = 2;
    map["a"] = 3;
    EXPECT_EQ(map.size(), 2u);
    EXPECT_EQ(keysInOrder(map), (std::vector<std::string>{"(Z", "a"}));
    EXPECT_EQ(map.find("a")->second, 3);
    EXPECT_FALSE(map.insert("a", 9).second);
    EXPECT_EQ(map.find("a")->second, 3);
}

TEST(HashMapTest, GrowthRehashesBucketByBucketFromTheHead)
{
    // "aaf" and "aba" have the same hash (3012): bucket 117 of 193 and 289 of
    // 389. Inserted in that order, "aba" heads the bucket; moving the nodes
    // one by one onto the head of the new bucket reverses them.
    StringHashMap<int> map;
    map["aaf"] = 0;
    map["aba"] = 0;
    for (int i = 0; map.size() < 193; ++i)
        map[("filler" + std::to_string(i)).c_str()] = i;
    ASSERT_EQ(map.bucketCount(), 193u);
    EXPECT_LT(positionOf(map, "aba"), positionOf(map, "aaf"));

    map["one more"] = 0;
    EXPECT_EQ(map.bucketCount(), 389u);
    EXPECT_LT(positionOf(map, "aaf"), positionOf(map, "aba"));

    // Whatever was inserted, iteration follows the bucket index upward.
    std::size_t previous = 0;
    for (const auto& entry : map) {
        std::size_t bucket = misc::hashString(entry.first.c_str()) % 389;
        EXPECT_LE(previous, bucket);
        previous = bucket;
    }
}

TEST(HashMapTest, AssigningAnExistingKeyAtTheGrowthPointStillGrows)
{
    StringHashMap<int> map;
    for (int i = 0; map.size() < 193; ++i)
        map[("key" + std::to_string(i)).c_str()] = i;
    ASSERT_EQ(map.bucketCount(), 193u);
    map["key0"] = 42;
    EXPECT_EQ(map.size(), 193u);
    EXPECT_EQ(map.bucketCount(), 389u);
    // A lookup alone never grows.
    StringHashMap<int> small(1);
    small["x"] = 1;
    small["y"] = 2;
    small["z"] = 3;
    small["w"] = 4;
    small["v"] = 5;
    ASSERT_EQ(small.bucketCount(), 5u);
    EXPECT_TRUE(small.contains("v"));
    EXPECT_EQ(small.bucketCount(), 5u);
}

TEST(HashMapTest, CopyKeepsBucketsAndOrderEraseUnlinks)
{
    StringHashMap<int> map;
    map["aaf"] = 1;
    map["aba"] = 2;
    map["a"] = 3;
    map["(Z"] = 4;
    StringHashMap<int> copy(map);
    EXPECT_EQ(keysInOrder(copy), keysInOrder(map));
    EXPECT_EQ(copy.bucketCount(), map.bucketCount());

    copy.erase("a");
    EXPECT_EQ(keysInOrder(copy), (std::vector<std::string>{"(Z", "aba", "aaf"}));
    EXPECT_EQ(keysInOrder(map), (std::vector<std::string>{"(Z", "a", "aba", "aaf"}));

    // Erasing while walking continues with the entry that followed.
    for (auto it = map.begin(); it != map.end();)
        it = (it->second % 2 == 0) ? map.erase(it) : std::next(it);
    EXPECT_EQ(keysInOrder(map), (std::vector<std::string>{"a", "aaf"}));
    map.clear();
    EXPECT_TRUE(map.empty());
    EXPECT_EQ(map.begin(), map.end());
}

TEST(HashMapTest, IdentityKeysNeverMerge)
{
    StringHashMap<int> map(100, KeyCompare::Identity);
    map.insert("a", 1);
    map.insert("a", 2);
    EXPECT_EQ(map.size(), 2u);
    // The later insertion heads the bucket; a text lookup finds nothing.
    EXPECT_EQ(map.begin()->second, 2);
    EXPECT_EQ(map.find("a"), map.end());
    const char* second_key = std::next(map.begin())->first.c_str();
    EXPECT_EQ(map.findKeyObject(second_key)->second, 1);
}

TEST(HashMapTest, FindOrAddGrowsOnlyWhenItAdds)
{
    // Unlike insertion, which grows at the growth point whether or not the
    // key is there, finding an entry leaves the table as it is.
    StringHashMap<int> map(1);
    for (const char* key : {"a", "b", "c", "d", "e"})
        EXPECT_TRUE(map.findOrAdd(key, 1).second);
    EXPECT_EQ(map.bucketCount(), 5u);
    auto found = map.findOrAdd("c", 7);
    EXPECT_FALSE(found.second);
    EXPECT_EQ(found.first->second, 1);
    EXPECT_EQ(map.bucketCount(), 5u);
    auto added = map.findOrAdd("f", 7);
    EXPECT_TRUE(added.second);
    EXPECT_EQ(added.first->second, 7);
    EXPECT_EQ(map.bucketCount(), 53u);
    EXPECT_EQ(map.size(), 6u);
}

TEST(HashMapTest, KeysOfAnyLengthKeepTheirText)
{
    // Keys longer than a few words, with every byte value but NUL, survive
    // growth, copies and erasure of their neighbours.
    std::string long_key(300, 'k');
    std::string odd_key = "MEM[16452+MEM[0+r3]]";
    odd_key += "\x01\x7f\x80\xff";
    StringHashMap<std::string> map(1);
    map.insert(long_key.c_str(), "long");
    map.insert(odd_key.c_str(), "odd");
    for (int i = 0; i < 100; ++i)
        map.insert(("key" + std::to_string(i)).c_str(), std::to_string(i));
    map.erase("key50");
    StringHashMap<std::string> copy(map);
    map.clear();
    ASSERT_NE(copy.find(long_key.c_str()), copy.end());
    EXPECT_EQ(copy.find(long_key.c_str())->first, long_key);
    EXPECT_EQ(copy.find(long_key.c_str())->first.size(), 300u);
    EXPECT_EQ(copy.find(odd_key.c_str())->second, "odd");
    EXPECT_EQ(copy.find("key50"), copy.end());
    EXPECT_EQ(copy.find("key99")->second, "99");
    EXPECT_EQ(copy.size(), 101u);
}

TEST(HashMapTest, MovingKeepsBucketsAndOrder)
{
    StringHashMap<int> map(1);
    for (int i = 0; i < 40; ++i)
        map[("k" + std::to_string(i)).c_str()] = i;
    const std::vector<std::string> order = keysInOrder(map);
    const std::size_t buckets = map.bucketCount();
    StringHashMap<int> moved(std::move(map));
    EXPECT_EQ(keysInOrder(moved), order);
    EXPECT_EQ(moved.bucketCount(), buckets);
    // What was moved from is empty and works as a map.
    EXPECT_TRUE(map.empty());
    EXPECT_EQ(map.find("k1"), map.end());
    map["again"] = 1;
    EXPECT_EQ(map.size(), 1u);

    StringHashMap<int> assigned(100);
    assigned["old"] = 0;
    assigned = std::move(moved);
    EXPECT_EQ(keysInOrder(assigned), order);
    EXPECT_EQ(assigned.bucketCount(), buckets);
    EXPECT_TRUE(moved.empty());
    EXPECT_EQ(moved.find("old"), moved.end());
    EXPECT_EQ(assigned.find("k39")->second, 39);
}
