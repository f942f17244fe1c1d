// A growing sequence of small records addressed by index, kept in chunks of
// fixed size: growing never moves what is stored (no copy of everything at
// each doubling, no twice-the-size peak), and elements stay where they are,
// so references to them survive later appends.
#ifndef VELCOR_MISC_CHUNKED_VECTOR_H
#define VELCOR_MISC_CHUNKED_VECTOR_H

#include <cstddef>
#include <memory>
#include <vector>

namespace misc {

template <class T, unsigned CHUNK_BITS = 13>
class ChunkedVector {
public:
    static constexpr std::size_t CHUNK_SIZE = std::size_t(1) << CHUNK_BITS;

    std::size_t size() const { return m_size; }
    bool empty() const { return m_size == 0; }

    T& operator[](std::size_t a_index) { return m_chunks[a_index >> CHUNK_BITS][a_index & (CHUNK_SIZE - 1)]; }
    const T& operator[](std::size_t a_index) const
    {
        return m_chunks[a_index >> CHUNK_BITS][a_index & (CHUNK_SIZE - 1)];
    }
    T& back() { return (*this)[m_size - 1]; }

    // Appends a_value and returns its index.
    std::size_t push_back(const T& a_value)
    {
        if ((m_size & (CHUNK_SIZE - 1)) == 0 && (m_size >> CHUNK_BITS) == m_chunks.size())
            m_chunks.emplace_back(new T[CHUNK_SIZE]);
        (*this)[m_size] = a_value;
        return m_size++;
    }

private:
    std::vector<std::unique_ptr<T[]>> m_chunks;
    std::size_t m_size = 0;
};

} // namespace misc

#endif
