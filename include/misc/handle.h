// Reference-counted handle through which shared nodes are held and passed.
//
// The counter lives inside the node (class Shared), so every handle of a node
// shares one counter however it was made: wrapping a raw pointer to a node
// that handles already hold joins their counter instead of starting a second
// one. This is what lets a node hand out a shared owner of itself (for
// instance the expression printer giving the common assertions the very node
// it prints) without any chance of a double delete.
#ifndef VELCOR_MISC_HANDLE_H
#define VELCOR_MISC_HANDLE_H

template <class T>
class Handle;

// Base of every node that handles hold: it carries the node's single counter.
class Shared {
    template <class>
    friend class Handle;
    int m_handle_count = 0;

protected:
    Shared() = default;
    // A copied node is a new node: it starts without owners.
    Shared(const Shared&) {}
    Shared& operator=(const Shared&) { return *this; }
    ~Shared() = default;
};

template <class T>
class Handle {
public:
    // A null handle: no node, no counter.
    Handle() = default;

    // Takes (shared) ownership of a_ptr; a node's first handle makes the
    // counter 1. A null pointer gives a null handle.
    Handle(T* a_ptr) { acquire(a_ptr); }

    Handle(const Handle& a_other) { acquire(a_other.m_ptr); }

    ~Handle() { release(); }

    Handle& operator=(T* a_ptr)
    {
        T* old = m_ptr;
        acquire(a_ptr);
        releaseNode(old);
        return *this;
    }

    Handle& operator=(const Handle& a_other)
    {
        // Taking the new owner before dropping the old one keeps the node
        // alive when a handle is assigned to itself (or to another handle of
        // the same node).
        T* old = m_ptr;
        acquire(a_other.m_ptr);
        releaseNode(old);
        return *this;
    }

    T* data() const { return m_ptr; }
    // Number of handles sharing the node; 0 for a null handle.
    int count() const { return m_ref_count ? *m_ref_count : 0; }
    T& operator*() const { return *m_ptr; }
    T* operator->() const { return m_ptr; }
    bool isNull() const { return m_ptr == nullptr; }

private:
    void acquire(T* a_ptr)
    {
        m_ptr = a_ptr;
        m_ref_count = a_ptr ? &static_cast<Shared*>(a_ptr)->m_handle_count : nullptr;
        if (m_ref_count)
            ++*m_ref_count;
    }

    static void releaseNode(T* a_ptr)
    {
        if (!a_ptr)
            return;
        int& counter = static_cast<Shared*>(a_ptr)->m_handle_count;
        if (--counter == 0)
            delete a_ptr;
    }

    void release()
    {
        T* old = m_ptr;
        m_ptr = nullptr;
        m_ref_count = nullptr;
        releaseNode(old);
    }

    T* m_ptr = nullptr;
    int* m_ref_count = nullptr;
};

#endif
