// String-keyed hash map whose iteration order is fixed by its algorithm, so
// that every list printed by walking a map is the same byte for byte on every
// host: hash h = 5*h + c over the key's bytes (signed), chained buckets whose
// counts come from a fixed prime list, new nodes at the head of their bucket,
// growth before every insertion when count + 1 exceeds the bucket count.
#ifndef VELCOR_MISC_HASH_MAP_H
#define VELCOR_MISC_HASH_MAP_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "misc/key_text.h"
#include "misc/small_object_pool.h"

namespace misc {

// Hash of a C string: every byte taken as a signed char, wrapping at 2^32.
inline std::uint32_t hashString(const char* a_key)
{
    std::uint32_t h = 0;
    for (; *a_key; ++a_key)
        h = 5u * h + static_cast<std::uint32_t>(static_cast<std::int32_t>(static_cast<signed char>(*a_key)));
    return h;
}

// The first prime of the bucket-count list that is >= a_hint (the last one
// when a_hint is larger than every prime).
inline std::size_t nextBucketCount(std::size_t a_hint)
{
    static const std::size_t primes[] = {
        5ul,         53ul,         97ul,         193ul,       389ul,       769ul,
        1543ul,      3079ul,       6151ul,       12289ul,     24593ul,     49157ul,
        98317ul,     196613ul,     393241ul,     786433ul,    1572869ul,   3145739ul,
        6291469ul,   12582917ul,   25165843ul,   50331653ul,  100663319ul, 201326611ul,
        402653189ul, 805306457ul,  1610612741ul, 3221225473ul, 4294967291ul};
    for (std::size_t prime : primes)
        if (prime >= a_hint)
            return prime;
    return primes[sizeof primes / sizeof primes[0] - 1];
}

// How keys are told apart: by their text, or by the identity of the key
// object (every insertion then adds a node, even for an equal text).
enum class KeyCompare { Text, Identity };

template <class V>
class StringHashMap {
public:
    using value_type = std::pair<const KeyText, V>;

private:
    // Each node keeps its key's hash: a lookup compares texts only when
    // the hashes agree, and growth never hashes a key again. The key's text
    // follows the node in the same block.
    struct Node {
        Node* m_next;
        std::uint32_t m_hash;
        value_type m_entry;
        template <class Value>
        Node(Node* a_next, std::uint32_t a_hash, const char* a_text, std::size_t a_size, Value&& a_value)
            : m_next(a_next), m_hash(a_hash), m_entry(KeyText(a_text, a_size), std::forward<Value>(a_value)) {}
    };

    template <class Value>
    static Node* makeNode(Node* a_next, std::uint32_t a_hash, const char* a_key, std::size_t a_size,
                          Value&& a_value)
    {
        const std::size_t bytes = sizeof(Node) + a_size + 1;
        void* block = allocateBlock(bytes);
        char* text = static_cast<char*>(block) + sizeof(Node);
        std::memcpy(text, a_key, a_size);
        text[a_size] = '\0';
        try {
            return new (block) Node(a_next, a_hash, text, a_size, std::forward<Value>(a_value));
        } catch (...) {
            releaseBlock(block, bytes);
            throw;
        }
    }

    static void dropNode(Node* a_node)
    {
        const std::size_t bytes = sizeof(Node) + a_node->m_entry.first.size() + 1;
        a_node->~Node();
        releaseBlock(a_node, bytes);
    }

#ifdef VELCOR_POOL_OFF
    static void* allocateBlock(std::size_t a_bytes) { return ::operator new(a_bytes); }
    static void releaseBlock(void* a_block, std::size_t) { ::operator delete(a_block); }
#else
    static void* allocateBlock(std::size_t a_bytes) { return smallObjects().allocate(a_bytes); }
    static void releaseBlock(void* a_block, std::size_t a_bytes) { smallObjects().release(a_block, a_bytes); }
#endif

public:

    template <bool Const>
    class Iter {
        using MapPtr = typename std::conditional<Const, const StringHashMap*, StringHashMap*>::type;
        friend class StringHashMap;
        MapPtr m_map = nullptr;
        std::size_t m_bucket = 0;
        Node* m_node = nullptr;

        Iter(MapPtr a_map, std::size_t a_bucket, Node* a_node)
            : m_map(a_map), m_bucket(a_bucket), m_node(a_node) {}
        void skipEmptyBuckets()
        {
            while (!m_node && ++m_bucket < m_map->m_buckets.size())
                m_node = m_map->m_buckets[m_bucket];
        }

    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = StringHashMap::value_type;
        using difference_type = std::ptrdiff_t;
        using reference = typename std::conditional<Const, const value_type&, value_type&>::type;
        using pointer = typename std::conditional<Const, const value_type*, value_type*>::type;

        Iter() = default;
        operator Iter<true>() const { return Iter<true>(m_map, m_bucket, m_node); }
        reference operator*() const { return m_node->m_entry; }
        pointer operator->() const { return &m_node->m_entry; }
        Iter& operator++()
        {
            m_node = m_node->m_next;
            skipEmptyBuckets();
            return *this;
        }
        Iter operator++(int)
        {
            Iter old = *this;
            ++*this;
            return old;
        }
        bool operator==(const Iter& a_other) const { return m_node == a_other.m_node; }
        bool operator!=(const Iter& a_other) const { return m_node != a_other.m_node; }
    };
    using iterator = Iter<false>;
    using const_iterator = Iter<true>;

    explicit StringHashMap(std::size_t a_hint = 100, KeyCompare a_compare = KeyCompare::Text)
        : m_buckets(nextBucketCount(a_hint), nullptr), m_compare(a_compare) {}

    StringHashMap(const StringHashMap& a_other)
        : m_buckets(a_other.m_buckets.size(), nullptr), m_compare(a_other.m_compare)
    {
        copyNodesFrom(a_other);
    }

    StringHashMap& operator=(const StringHashMap& a_other)
    {
        if (this != &a_other) {
            clear();
            m_buckets.assign(a_other.m_buckets.size(), nullptr);
            m_compare = a_other.m_compare;
            copyNodesFrom(a_other);
        }
        return *this;
    }

    // Moving takes the entries over, buckets and order as they are; the map
    // moved from is left empty, with the buckets of the one moved to.
    StringHashMap(StringHashMap&& a_other) noexcept
        : m_buckets(a_other.m_buckets.size(), nullptr), m_compare(a_other.m_compare)
    {
        m_buckets.swap(a_other.m_buckets);
        std::swap(m_count, a_other.m_count);
    }

    StringHashMap& operator=(StringHashMap&& a_other) noexcept
    {
        if (this != &a_other) {
            m_buckets.swap(a_other.m_buckets);
            std::swap(m_count, a_other.m_count);
            std::swap(m_compare, a_other.m_compare);
            a_other.clear();
        }
        return *this;
    }

    ~StringHashMap() { clear(); }

    std::size_t size() const { return m_count; }
    bool empty() const { return m_count == 0; }
    std::size_t bucketCount() const { return m_buckets.size(); }

    iterator begin() { return firstFrom<iterator>(this); }
    iterator end() { return iterator(this, m_buckets.size(), nullptr); }
    const_iterator begin() const { return firstFrom<const_iterator>(this); }
    const_iterator end() const { return const_iterator(this, m_buckets.size(), nullptr); }

    // A lookup never grows the table. With identity keys no text matches.
    iterator find(const char* a_key)
    {
        if (m_compare == KeyCompare::Identity)
            return end();
        return findHashed(a_key, hashString(a_key));
    }
    const_iterator find(const char* a_key) const { return const_cast<StringHashMap*>(this)->find(a_key); }
    // The same for a key whose hash (hashString) its owner keeps.
    iterator find(const char* a_key, std::uint32_t a_hash)
    {
        if (m_compare == KeyCompare::Identity)
            return end();
        return findHashed(a_key, a_hash);
    }

    // The entry whose key is the very text object a_key points to (the key
    // text handed out by an iterator); used with identity keys.
    const_iterator findKeyObject(const char* a_key) const
    {
        for (const_iterator it = begin(); it != end(); ++it)
            if (it->first.c_str() == a_key)
                return it;
        return end();
    }
    bool contains(const char* a_key) const { return find(a_key) != end(); }

    // Insertion when absent; the table grows first in either case.
    std::pair<iterator, bool> insert(const char* a_key, const V& a_value) { return insertValue(a_key, a_value); }
    std::pair<iterator, bool> insert(const char* a_key, V&& a_value) { return insertValue(a_key, std::move(a_value)); }

    // The entry of a_key, added with a_value when absent (the table grows
    // only then, as find followed by insert would have it): one hash and
    // one walk of the key's bucket. Text keys only.
    std::pair<iterator, bool> findOrAdd(const char* a_key, const V& a_value)
    {
        const std::uint32_t hash = hashString(a_key);
        iterator found = findHashed(a_key, hash);
        if (found != end())
            return {found, false};
        growFor(m_count + 1);
        return {addAtHead(a_key, hash, a_value), true};
    }

    // Assignment-style access: the table grows first, then the entry is
    // found or added with a default value.
    V& operator[](const char* a_key) { return insert(a_key, V()).first->second; }
    // The same for a key whose hash (hashString) its owner keeps.
    V& at(const char* a_key, std::uint32_t a_hash) { return insertValue(a_key, a_hash, V()).first->second; }

    iterator erase(iterator a_position)
    {
        iterator next = a_position;
        ++next;
        Node** link = &m_buckets[a_position.m_bucket];
        while (*link != a_position.m_node)
            link = &(*link)->m_next;
        *link = a_position.m_node->m_next;
        dropNode(a_position.m_node);
        --m_count;
        return next;
    }

    bool erase(const char* a_key)
    {
        iterator found = find(a_key);
        if (found == end())
            return false;
        erase(found);
        return true;
    }

    // Removes every entry; the bucket count stays.
    void clear()
    {
        for (Node*& head : m_buckets) {
            while (head) {
                Node* next = head->m_next;
                dropNode(head);
                head = next;
            }
        }
        m_count = 0;
    }

private:
    template <class It, class Map>
    static It firstFrom(Map a_map)
    {
        It it(a_map, 0, a_map->m_buckets.empty() ? nullptr : a_map->m_buckets[0]);
        if (!it.m_node)
            it.skipEmptyBuckets();
        return it;
    }

    iterator findHashed(const char* a_key, std::uint32_t a_hash)
    {
        std::size_t bucket = a_hash % m_buckets.size();
        for (Node* n = m_buckets[bucket]; n; n = n->m_next)
            if (n->m_hash == a_hash && std::strcmp(n->m_entry.first.c_str(), a_key) == 0)
                return iterator(this, bucket, n);
        return end();
    }

    template <class Value>
    std::pair<iterator, bool> insertValue(const char* a_key, Value&& a_value)
    {
        return insertValue(a_key, hashString(a_key), std::forward<Value>(a_value));
    }

    template <class Value>
    std::pair<iterator, bool> insertValue(const char* a_key, std::uint32_t a_hash, Value&& a_value)
    {
        growFor(m_count + 1);
        if (m_compare == KeyCompare::Text) {
            iterator found = findHashed(a_key, a_hash);
            if (found != end())
                return {found, false};
        }
        return {addAtHead(a_key, a_hash, std::forward<Value>(a_value)), true};
    }

    template <class Value>
    iterator addAtHead(const char* a_key, std::uint32_t a_hash, Value&& a_value)
    {
        std::size_t bucket = a_hash % m_buckets.size();
        m_buckets[bucket] =
            makeNode(m_buckets[bucket], a_hash, a_key, std::strlen(a_key), std::forward<Value>(a_value));
        ++m_count;
        return iterator(this, bucket, m_buckets[bucket]);
    }

    void growFor(std::size_t a_needed)
    {
        if (a_needed <= m_buckets.size())
            return;
        std::size_t count = nextBucketCount(a_needed);
        if (count <= m_buckets.size())
            return;
        std::vector<Node*> fresh(count, nullptr);
        for (Node*& head : m_buckets) {
            while (Node* node = head) {
                head = node->m_next;
                std::size_t bucket = node->m_hash % count;
                node->m_next = fresh[bucket];
                fresh[bucket] = node;
            }
        }
        m_buckets.swap(fresh);
    }

    void copyNodesFrom(const StringHashMap& a_other)
    {
        for (std::size_t i = 0; i < a_other.m_buckets.size(); ++i) {
            Node** tail = &m_buckets[i];
            for (Node* n = a_other.m_buckets[i]; n; n = n->m_next) {
                *tail = makeNode(nullptr, n->m_hash, n->m_entry.first.data(), n->m_entry.first.size(),
                                 n->m_entry.second);
                tail = &(*tail)->m_next;
            }
        }
        m_count = a_other.m_count;
    }

    std::vector<Node*> m_buckets;
    std::size_t m_count = 0;
    KeyCompare m_compare;
};

} // namespace misc

#endif
