// The translator's core: the path condition of every instruction id
// (annotations), the guarded value, and the naming of memory and stack cells.
#include "machine.h"

#include <cstring>
#include <iostream>
#include <string>

#include "common.h"
#include "memory_name.h"
#include "misc/trace.h"
#include "misc/writer.h"

const char* const CR_register[32] = {"cr00", "cr01", "cr02", "cr03", "cr04", "cr05", "cr06", "cr07",
                                     "cr08", "cr09", "cr10", "cr11", "cr12", "cr13", "cr14", "cr15",
                                     "cr16", "cr17", "cr18", "cr19", "cr20", "cr21", "cr22", "cr23",
                                     "cr24", "cr25", "cr26", "cr27", "cr28", "cr29", "cr30", "cr31"};

Annotation::Annotation(int a_id, DNF a_formula) : m_id(a_id), m_formula(std::move(a_formula))
{
    print();
}

void Annotation::print() const
{
    misc::Writer out(*getOutFile());
    out << commentChar() << "------------------Annotation id " << m_id << '\n';
    m_formula.print();
    out << commentChar() << "------------------end print annotation \n";
}

void Machine::init(Symbols* a_parse_symbol_table)
{
    m_falseDNF = DNF(false);
    m_parse_symbol_table = a_parse_symbol_table;
    m_CR_copy = nullptr;
    m_unknownMemory = 0;
    m_cells.clear();
    for (const char* bit : CR_register)
        m_parse_symbol_table->addTN(new TN(TN_LOG_REG, bit));
    m_lastAnnotationIndex = 0;
    setAnnotation(Annotation(0, DNF()), true);
}

void Machine::clear()
{
    m_parse_symbol_table = nullptr;
    m_annotations.clear();
    m_lastAnnotationIndex = 0;
    m_falseDNF = DNF();
    m_unknownMemory = 0;
    m_CR_copy = nullptr;
    m_cells.clear();
}

DNF Machine::getAnnotation(int a_id) const
{
    if (a_id == 0)
        return DNF();
    for (const Annotation& annotation : m_annotations)
        if (annotation.id() == a_id)
            return annotation.formula();
    return DNF(false);
}

DNF Machine::getAndDeleteFirstAnnotation()
{
    if (m_annotations.empty())
        return DNF(false);
    DNF first = m_annotations.front().takeFormula();
    m_annotations.pop_front();
    return first;
}

const Annotation& Machine::setAnnotation(Annotation a_annotation, bool)
{
    auto position = m_annotations.begin();
    while (position != m_annotations.end() && position->id() < a_annotation.id())
        ++position;
    if (position != m_annotations.end() && position->id() == a_annotation.id())
        position = m_annotations.erase(position);
    auto inserted = m_annotations.insert(position, std::move(a_annotation));
    inserted->formula().print();
    return *inserted;
}

bool Machine::isBranch(TOP a_operation)
{
    return a_operation == b || a_operation == bc || a_operation == bl || a_operation == bclr;
}

ExpHandle Machine::mayBeIf(bool, bool, const ExpHandle& a_cond, const ExpHandle& a_then_part,
                           const ExpHandle& a_else_part) const
{
    if (a_then_part == a_else_part)
        return a_then_part;
    if (a_cond->isConst())
        return a_cond->constValue() != 0 ? a_then_part : a_else_part;
    return new TrinaryExp(IF, a_cond, a_then_part, a_else_part);
}

bool Machine::isSp(const TN* a_tn) const
{
    misc::traceOut() << "DEBUG From isSp : " << a_tn->TNName() << '\n';
    return std::strcmp(a_tn->TNName(), "r1") == 0;
}

namespace {

// Every negative displacement is the one cell below the frame.
const char* const OLD_STACK_POINTER = "oldSP";

} // namespace

TN* Machine::memoryVar(const TN* a_tn)
{
    long displacement = a_tn->TNValue();
    if (displacement < 0) {
        misc::traceOut() << "**Added oldSp since " << displacement << '\n';
        return m_parse_symbol_table->addNamedTN(TN_SYMBOL, OLD_STACK_POINTER);
    }
    std::string name = memoryCellName(displacement);
    return m_parse_symbol_table->addNamedTN(TN_SYMBOL, name.c_str());
}

TN* Machine::memoryVar(const TN* a_tn, const TN* b_tn)
{
    long displacement = a_tn->TNValue();
    if (displacement < 0)
        return memoryVar(a_tn, b_tn->TNName());
    // Registering the cell again would leave it as it is when it still
    // holds a plain cell of its name.
    TN*& cell = m_cells[std::make_pair(displacement, b_tn)];
    if (!cell || !cell->holdsNamed(TN_SYMBOL, false))
        cell = memoryVar(a_tn, b_tn->TNName());
    return cell;
}

TN* Machine::memoryVar(const TN* a_tn, const char* a_base_name)
{
    long displacement = a_tn->TNValue();
    if (displacement < 0) {
        misc::traceOut() << "**Added oldSp since " << displacement << '\n';
        return m_parse_symbol_table->addNamedTN(TN_SYMBOL, OLD_STACK_POINTER);
    }
    std::string name = memoryCellName(displacement, a_base_name);
    return m_parse_symbol_table->addNamedTN(TN_SYMBOL, name.c_str());
}

TN* Machine::stackVar(const TN* a_tn)
{
    misc::traceOut() << "From StackVar " << a_tn->TNName() << '\n';
    long displacement = a_tn->TNValue();
    if (displacement < 0)
        return m_parse_symbol_table->addNamedTN(TN_SYMBOL, OLD_STACK_POINTER);
    std::string name = "STACK" + std::to_string(displacement);
    misc::traceOut() << "stack variable name is" << name << '\n';
    TN* cell = m_parse_symbol_table->addNamedTN(TN_SYMBOL, name.c_str());
    cell->setIsAddress(true);
    return cell;
}

void Machine::unsupported_op(TOP a_operation) const
{
    std::cerr << " Unsupported Opcode " << topName(a_operation) << '\n';
}

void Machine::print(int a_id) const
{
    misc::Writer(*getOutFile()) << commentChar() << " ANNOTATIONS: " << '\n';
    for (const Annotation& annotation : m_annotations)
        if (annotation.id() == a_id)
            annotation.print();
}

void Machine::printAll() const
{
    misc::Writer(*getOutFile()) << commentChar() << " ANNOTATIONS: " << '\n';
    for (const Annotation& annotation : m_annotations)
        annotation.print();
}
