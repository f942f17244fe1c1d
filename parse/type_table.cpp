#include "type_table.h"

#include <cstdint>
#include <cstring>
#include <iostream>

#include "dwarf_debug.h"
#include "memory_name.h"
#include "misc/stop.h"
#include "misc/trace.h"

namespace {

const char* checked(const char* a_text)
{
    VELCOR_ASSERT(a_text != nullptr);
    return a_text;
}

std::optional<std::string> copyOf(const char* a_text)
{
    if (!a_text)
        return std::nullopt;
    return std::string(a_text);
}

std::string nameOf(const typeSymbol& a_type)
{
    const char* name = a_type.getName();
    return name ? name : "(unnamed)";
}

// Types are known only by name, through the process-wide table; without a
// table no type is known.
typeSymbol* lookup(const char* a_name)
{
    return type_table && a_name ? type_table->getType(a_name) : nullptr;
}

// The memory name of the member at a_offset inside what a_prev_name names:
// the cell the pointer a_prev_name points to, or, for a structure held by
// value, the same cell as its container moved by the offset. False when
// a_prev_name gives no name to build on.
bool memberName(const char* a_prev_name, int a_offset, bool a_pointer, std::string& a_name)
{
    if (a_pointer) {
        a_name = memoryCellName(a_offset, a_prev_name);
        return true;
    }
    if (!isMemoryCellName(a_prev_name)) {
        misc::traceOut() << "NOT GOOD in type_table\n";
        return false;
    }
    if (!shiftedMemoryCellName(a_prev_name, a_offset, a_name)) {
        std::cerr << "ERROR2: Cannot scan " << a_prev_name << '\n';
        return false;
    }
    return true;
}

} // namespace

CTn::CTn(bool a_local, const char* a_type_name, const char* a_variable_name, bool a_pointer)
    : m_type_name(checked(a_type_name)), m_variable_name(checked(a_variable_name)), m_local(a_local),
      m_pointer(a_pointer)
{
}

memberSymbol::memberSymbol(const char* a_member_name, const char* a_member_type, bool a_pointer)
    : m_member_name(checked(a_member_name)), m_member_type(checked(a_member_type)), m_pointer(a_pointer)
{
}

// Marks a type as being expanded for the life of one expansion step; meeting
// it again inside means the type contains itself by value, which no walk can
// finish.
class typeSymbol::ExpansionGuard {
public:
    explicit ExpansionGuard(typeSymbol& a_type) : m_type(a_type)
    {
        if (m_type.m_expanding)
            stopRun("Type " + nameOf(m_type) + " contains itself by value\n");
        m_type.m_expanding = true;
    }
    ~ExpansionGuard() { m_type.m_expanding = false; }
    ExpansionGuard(const ExpansionGuard&) = delete;
    ExpansionGuard& operator=(const ExpansionGuard&) = delete;

private:
    typeSymbol& m_type;
};

typeSymbol::typeSymbol(c_type a_c_type) : m_c_type(a_c_type) {}

typeSymbol::typeSymbol(const char* a_type_name, c_type a_c_type) : m_c_type(a_c_type), m_type_name(copyOf(a_type_name))
{
}

typeSymbol::~typeSymbol()
{
    while (memberSymbol* member = m_first_member) {
        m_first_member = member->getNext();
        delete member;
    }
}

void typeSymbol::setName(const char* a_type_name)
{
    m_type_name = copyOf(a_type_name);
}

void typeSymbol::setRenamedType(const char* a_renamed_type)
{
    m_renamed_type = copyOf(a_renamed_type);
}

memberSymbol* typeSymbol::addMember(const char* a_member_name, const char* a_member_type, bool a_pointer)
{
    memberSymbol* member = new memberSymbol(a_member_name, a_member_type, a_pointer);
    if (m_last_member)
        m_last_member->setNext(member);
    else
        m_first_member = member;
    m_last_member = member;
    return member;
}

typeSymbol* typeSymbol::resolved()
{
    typeSymbol* type = this;
    const char* reached_as = getName();
    std::unordered_set<const typeSymbol*> seen;
    while (type && type->m_renamed_type) {
        if (!seen.insert(type).second)
            stopRun("Renaming cycle through type " + std::string(reached_as) + "\n");
        reached_as = type->m_renamed_type->c_str();
        type = lookup(reached_as);
    }
    return type;
}

typeSymbol* typeSymbol::typeOf(const memberSymbol* a_member)
{
    typeSymbol* type = lookup(a_member->getType());
    return type ? type->resolved() : nullptr;
}

memberSymbol* typeSymbol::findMember(const char* a_member_name)
{
    if (!a_member_name)
        return nullptr;
    // Walks ask for the member they stand on.
    if (m_current_member && std::strcmp(m_current_member->getName(), a_member_name) == 0)
        return m_current_member;
    for (memberSymbol* member = m_first_member; member; member = member->getNext())
        if (std::strcmp(member->getName(), a_member_name) == 0)
            return member;
    return nullptr;
}

int typeSymbol::getMemberOffset(const char* a_member_name)
{
    typeSymbol* type = resolved();
    memberSymbol* member = type ? type->findMember(a_member_name) : nullptr;
    return member ? member->getOffset() : -1;
}

const char* typeSymbol::getMemberType(const char* a_member_name)
{
    typeSymbol* type = resolved();
    memberSymbol* member = type ? type->findMember(a_member_name) : nullptr;
    return member ? member->getType() : nullptr;
}

void typeSymbol::updateOffsets()
{
    typeSymbol* type = resolved();
    if (!type)
        return;
    const char* type_name = type->getName();
    for (memberSymbol* member = type->m_first_member; member; member = member->getNext()) {
        std::string key = std::string(type_name ? type_name : "") + "#" + member->getName();
        int offset = dwarf_debug_o.getOffset(key.c_str());
        misc::traceOut() << "Get offset of " << key << ": offset=" << offset << '\n';
        member->setOffset(offset);
    }
}

void typeSymbol::declareAllMembers(bool a_local_flag, const char* a_prev_name, bool a_pointer,
                                   symbolTable* a_symbol_table)
{
    VELCOR_ASSERT(a_prev_name != nullptr && a_symbol_table != nullptr);
    typeSymbol* type = resolved();
    if (!type)
        return;
    ExpansionGuard guard(*type);
    for (type->m_current_member = type->m_first_member; type->m_current_member;
         type->m_current_member = type->m_current_member->getNext()) {
        memberSymbol* member = type->m_current_member;
        std::string name;
        if (!memberName(a_prev_name, type->getMemberOffset(member->getName()), a_pointer, name))
            continue;
        a_symbol_table->addSymbol(new CTn(a_local_flag, member->getType(), name.c_str(), member->isPointer()));
        // What a pointer points to is declared by whoever follows it.
        if (member->isPointer())
            continue;
        if (typeSymbol* inner = typeOf(member))
            inner->declareAllMembers(a_local_flag, name.c_str(), false, a_symbol_table);
    }
}

void typeSymbol::initMembersIter()
{
    std::unordered_set<const typeSymbol*> done;
    if (typeSymbol* type = resolved())
        type->resetCursors(done);
}

// Every type reachable through the members once, so that types that refer
// to each other end the recursion.
void typeSymbol::resetCursors(std::unordered_set<const typeSymbol*>& a_done)
{
    if (!a_done.insert(this).second)
        return;
    m_current_member = m_first_member;
    for (memberSymbol* member = m_first_member; member; member = member->getNext())
        if (typeSymbol* inner = typeOf(member))
            inner->resetCursors(a_done);
}

int typeSymbol::getNextMemberOffset()
{
    typeSymbol* type = resolved();
    if (!type)
        return -1;
    ExpansionGuard guard(*type);
    while (memberSymbol* member = type->m_current_member) {
        typeSymbol* inner = member->isPointer() ? nullptr : typeOf(member);
        if (inner && inner->hasMembers()) {
            int offset = inner->getNextMemberOffset();
            if (offset != -1)
                return addOffsets(member->getOffset(), offset);
            inner->m_current_member = inner->m_first_member;
            type->m_current_member = member->getNext();
            continue;
        }
        type->m_current_member = member->getNext();
        // A cell of simple type counts as offset 0 of the walk.
        return member->isPointer() ? member->getOffset() : 0;
    }
    return -1;
}

void typeTable::addType(typeSymbol* a_type)
{
    VELCOR_ASSERT(a_type != nullptr && a_type->getName() != nullptr);
    addType(a_type->getName(), a_type);
}

void typeTable::addType(const char* a_name, typeSymbol* a_type)
{
    VELCOR_ASSERT(a_name != nullptr && a_type != nullptr);
    m_owned.try_emplace(a_type, a_type);
    m_type_symbol_table[a_name] = a_type;
}

typeSymbol* typeTable::getType(const char* a_name) const
{
    if (!a_name)
        return nullptr;
    auto found = m_type_symbol_table.find(a_name);
    return found == m_type_symbol_table.end() ? nullptr : found->second;
}

void symbolTable::addSymbol(CTn* a_ctn)
{
    VELCOR_ASSERT(a_ctn != nullptr);
    m_owned.try_emplace(a_ctn, a_ctn);
    m_symbol_table[a_ctn->getVariableName()] = a_ctn;
}

CTn* symbolTable::getSymbol(const char* a_name) const
{
    if (!a_name)
        return nullptr;
    auto found = m_symbol_table.find(a_name);
    return found == m_symbol_table.end() ? nullptr : found->second;
}

void symbolTable::print() const
{
    misc::traceOut() << "@@================\n";
    for (const auto& entry : m_symbol_table)
        misc::traceOut() << "@@" << entry.first << " " << entry.second->getVariableName() << '\n';
}
