// The table of the named operands met on one side of the comparison. It owns
// every operand it hands out, keeps the object of a name stable when the name
// is registered again (so expressions built earlier see its latest contents),
// and writes the declarations of the common header.
#ifndef VELCOR_SRC_SYMBOLS_H
#define VELCOR_SRC_SYMBOLS_H

#include <memory>
#include <vector>

#include "TN.h"
#include "common.h"
#include "misc/hash_map.h"

class Symbols {
public:
    using Table = misc::StringHashMap<TN*>;

    // Both forms start with the entry "true", a logical operand.
    Symbols();
    explicit Symbols(system_t a_system);
    Symbols(const Symbols&) = delete;
    Symbols& operator=(const Symbols&) = delete;

    static std::string correctNameForIcs(const char* a_name) { return TN::correctNameForIcs(a_name); }

    // Register a name (corrected for the output syntax) and return its
    // operand; a name already present has its operand set afresh in place.
    // Null when the name is null.
    TN* addTN(TN_t a_type, const char* a_name);
    TN* addTN(TN_t a_type, const char* a_first, const char* a_name);
    TN* addTN(TN_t a_type, const char* a_name, long a_value);
    // Constants: a new operand that the table owns but does not name.
    TN* addTN(TN_t a_type, long a_value);
    TN* addTN(long a_value);
    // A constant operand of a_value, shared with the occurrences of the value
    // that came shortly before: the value and kind of a constant never
    // change, and expressions tell constants apart by value, so one operand
    // serves as well as many, in a fraction of the memory.
    TN* constant(long a_value);
    // Registers a_tn under its name as is. The table takes ownership: when
    // the name is new a_tn is stored, otherwise the stored operand is updated
    // from a_tn. Returns the stored operand (null when a_tn is null).
    TN* addTN(TN* a_tn);
    // addTN(new TN(a_type, a_name)), without the new operand when the
    // name's operand would stay as it is.
    TN* addNamedTN(TN_t a_type, const char* a_name);

    bool isIn(const char* a_name) const;
    TN* getTN(const char* a_name) const;
    void print() const;
    system_t getSystem() const { return m_system; }

    const Table& table() const { return m_table; }

private:
    // The operand of a name that needs no correction, made when new, else
    // set afresh unless it holds what it would be set to: by assignment
    // (the flags too) when a_assign, else by update.
    TN* registerCorrect(TN_t a_type, const char* a_name, bool a_assign);
    TN* store(const std::string& a_key, TN a_contents);
    TN* own(TN* a_tn);

    system_t m_system = TARGET;
    Table m_table;
    std::vector<std::unique_ptr<TN>> m_owned;
    // The last constant operand made in each slot (by value): listings use
    // their displacements over and over.
    struct RecentConstant {
        long m_value = 0;
        TN* m_tn = nullptr;
    };
    static constexpr std::size_t RECENT_CONSTANTS = 4096;
    std::vector<RecentConstant> m_recent_constants = std::vector<RecentConstant>(RECENT_CONSTANTS);
};

#endif
