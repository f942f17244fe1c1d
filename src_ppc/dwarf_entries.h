// Reading DWARF 2 to 5 entries through libdw, for the modern reader: each
// access gives what was asked or ends the run with "Cannot read the
// debugging information of PATH: REASON" (libdw's own reason when it gave
// one). Lists of children are walked forward only, so that a malformed
// sibling chain cannot loop.
#ifndef VELCOR_SRC_PPC_DWARF_ENTRIES_H
#define VELCOR_SRC_PPC_DWARF_ENTRIES_H

#include <dwarf.h>
#include <elfutils/libdw.h>

#include <cstdint>
#include <string>

// const, volatile, restrict and _Atomic.
bool isQualifierTag(int a_tag);
bool isStructureTag(int a_tag);
// Pointers and references.
bool isPointerTag(int a_tag);
// "0x" and the hexadecimal digits.
std::string hexNumber(std::uint64_t a_value);

class EntryReader {
public:
    // a_path names the file in messages; it must outlive the reader.
    explicit EntryReader(const std::string& a_path) : m_path(a_path) {}

    [[noreturn]] void malformed(const std::string& a_reason) const;
    // libdw's reason for a_error when it has one, else a_what.
    [[noreturn]] void failed(int a_error, const char* a_what) const;
    // "the entry at 0x..." for messages.
    std::string describe(Dwarf_Die a_die) const;

    int tag(Dwarf_Die a_die) const;
    // The attribute a_code of a_die (also through the entries it is an
    // instance or a completion of, when a_integrate); false when absent.
    bool attribute(Dwarf_Die& a_die, unsigned a_code, Dwarf_Attribute& a_attribute, bool a_integrate = false) const;
    // The name, "" for none.
    std::string name(Dwarf_Die& a_die, bool a_integrate = false) const;
    bool flag(Dwarf_Die& a_die, unsigned a_code, bool a_integrate = false) const;
    std::uint64_t unsignedValue(Dwarf_Attribute& a_attribute) const;
    // A constant with the sign its form gives it: data forms are unsigned
    // (gcc writes a bound of 200 as the single byte 0xc8). a_what names it
    // in messages.
    std::int64_t constant(Dwarf_Die& a_die, Dwarf_Attribute& a_attribute, const char* a_what) const;
    // The entry that a_die's type attribute refers to; false for none.
    bool type(Dwarf_Die& a_die, Dwarf_Die& a_type, bool a_integrate = false) const;

    // Calls a_visit on each child of a_parent in order, while it answers
    // true.
    template <class Visit>
    void forEachChild(Dwarf_Die& a_parent, Visit a_visit) const
    {
        Dwarf_Die child;
        dwarf_errno();
        int status = dwarf_child(&a_parent, &child);
        while (status == 0) {
            if (!a_visit(child))
                return;
            Dwarf_Die next;
            status = dwarf_siblingof(&child, &next);
            if (status == 0 && dwarf_dieoffset(&next) <= dwarf_dieoffset(&child))
                malformed("the sibling of " + describe(child) + " lies before it");
            child = next;
        }
        if (status < 0)
            failed(dwarf_errno(), "an unreadable list of entries");
    }

private:
    const std::string& m_path;
};

#endif
