// Tables of source types and source variables.
//
// A structure type keeps its members in declaration order; from it the
// members can be declared as source variables under the same memory names
// that the mapping of the node's parameter structure gives ("MEM[k+C_]"),
// their offsets filled in from the debugging information, and their byte
// offsets walked depth-first. Types refer to each other by name through the
// process-wide `type_table`; a renaming stands for the type it names.
//
// Ownership: a type owns its members; each table owns every record entered
// into it (once, however many names it is entered under) until the table
// dies, so a record stays valid even after its name is entered again.
//
// A renaming cycle, or a type that contains itself by value, cannot be
// expanded: the operations that meet one stop the run naming the type.
#ifndef VELCOR_PARSE_TYPE_TABLE_H
#define VELCOR_PARSE_TYPE_TABLE_H

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "misc/hash_map.h"

enum c_type {
    pointer_type = 0,
    array_type = 1,
    user_type = 2,
    structure_type = 3,
    simple_type = 4,
    renaming_type = 5
};

// A source variable.
class CTn {
public:
    CTn(bool a_local, const char* a_type_name, const char* a_variable_name, bool a_pointer);
    CTn(const CTn&) = delete;
    CTn& operator=(const CTn&) = delete;

    const char* getTypeName() const { return m_type_name.c_str(); }
    const char* getVariableName() const { return m_variable_name.c_str(); }
    bool getLocal() const { return m_local; }
    bool isPointer() const { return m_pointer; }

private:
    std::string m_type_name;
    std::string m_variable_name;
    bool m_local;
    bool m_pointer;
};

class symbolTable;

// One member of a structure, linked to the next one of the same structure.
class memberSymbol {
public:
    memberSymbol(const char* a_member_name, const char* a_member_type, bool a_pointer);
    memberSymbol(const memberSymbol&) = delete;
    memberSymbol& operator=(const memberSymbol&) = delete;

    const char* getName() const { return m_member_name.c_str(); }
    const char* getType() const { return m_member_type.c_str(); }
    int getOffset() const { return m_member_offset; }
    void setOffset(int a_member_offset) { m_member_offset = a_member_offset; }
    bool isPointer() const { return m_pointer; }
    memberSymbol* getNext() const { return m_next_member; }
    // Links only: the structure that holds the list owns its members.
    void setNext(memberSymbol* a_next_symbol) { m_next_member = a_next_symbol; }

private:
    std::string m_member_name;
    std::string m_member_type;
    int m_member_offset = -1;
    bool m_pointer;
    memberSymbol* m_next_member = nullptr;
};

class typeSymbol {
public:
    explicit typeSymbol(c_type a_c_type);
    typeSymbol(const char* a_type_name, c_type a_c_type);
    ~typeSymbol();
    typeSymbol(const typeSymbol&) = delete;
    typeSymbol& operator=(const typeSymbol&) = delete;

    // A null pointer clears the name.
    void setName(const char* a_type_name);
    // A type with a renaming target is a renaming; a null pointer clears it.
    void setRenamedType(const char* a_renamed_type);
    const char* getName() const { return m_type_name ? m_type_name->c_str() : nullptr; }
    const char* getRenamedType() const { return m_renamed_type ? m_renamed_type->c_str() : nullptr; }

    bool isPointerTo() const { return m_c_type == pointer_type; }
    bool isArrayOf() const { return m_c_type == array_type; }
    bool isStructure() const { return m_c_type == structure_type; }
    bool hasMembers() const { return m_first_member != nullptr; }

    // Appends a member; the new member is answered so that its offset can
    // be set where it is known.
    memberSymbol* addMember(const char* a_member_name, const char* a_member_type, bool a_pointer);
    // -1 when there is no such member.
    int getMemberOffset(const char* a_member_name);
    // Null when there is no such member.
    const char* getMemberType(const char* a_member_name);
    int getByteSize() const { return 0; }

    // Takes every member's offset from the debugging information, under
    // "type#member".
    void updateOffsets();
    // Declares every member, and the members of those held by value, as
    // variables of a_symbol_table. Started with a_pointer true and the base
    // name of a side, the names are those of the parameter mapping.
    void declareAllMembers(bool a_local_flag, const char* a_prev_name, bool a_pointer,
                           symbolTable* a_symbol_table);

    // Walk over the byte offsets of all members, depth-first; -1 ends it. A
    // pointer yields its own offset, a member whose type has members the
    // offsets inside it moved by its own, any other member 0.
    void initMembersIter();
    int getNextMemberOffset();

private:
    // The type this one stands for, through any chain of renamings: itself
    // when it is no renaming, null when a target is unknown.
    typeSymbol* resolved();
    // The member of that name: the one at the cursor first, then the list.
    memberSymbol* findMember(const char* a_member_name);
    // The resolved type of a member, or null when it is not known.
    static typeSymbol* typeOf(const memberSymbol* a_member);
    void resetCursors(std::unordered_set<const typeSymbol*>& a_done);
    class ExpansionGuard;

    c_type m_c_type;
    std::optional<std::string> m_type_name;
    std::optional<std::string> m_renamed_type;
    memberSymbol* m_first_member = nullptr;
    memberSymbol* m_last_member = nullptr;
    memberSymbol* m_current_member = nullptr;
    // Set while the type is being expanded, so that a type that contains
    // itself by value is refused instead of expanded without end.
    bool m_expanding = false;
};

class typeTable {
public:
    typeTable() : m_type_symbol_table(100) {}
    typeTable(const typeTable&) = delete;
    typeTable& operator=(const typeTable&) = delete;

    // The table takes ownership of a_type. A name entered again now stands
    // for the new type.
    void addType(typeSymbol* a_type);
    void addType(const char* a_name, typeSymbol* a_type);
    typeSymbol* getType(const char* a_name) const;

private:
    misc::StringHashMap<typeSymbol*> m_type_symbol_table;
    std::unordered_map<const typeSymbol*, std::unique_ptr<typeSymbol>> m_owned;
};

class symbolTable {
public:
    symbolTable() : m_symbol_table(100) {}
    symbolTable(const symbolTable&) = delete;
    symbolTable& operator=(const symbolTable&) = delete;

    // The table takes ownership of a_ctn. A name entered again now stands
    // for the new variable.
    void addSymbol(CTn* a_ctn);
    CTn* getSymbol(const char* a_name) const;
    std::size_t size() const { return m_symbol_table.size(); }
    // The table on standard output, one "@@name variable" line an entry.
    void print() const;

private:
    misc::StringHashMap<CTn*> m_symbol_table;
    std::unordered_map<const CTn*, std::unique_ptr<CTn>> m_owned;
};

// Process-wide tables; the run leaves both unset.
extern typeTable* type_table;
extern symbolTable* symbol_table;

#endif
