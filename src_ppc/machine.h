// The PowerPC instruction translator. One forward pass over the listing: each
// instruction id carries a path condition (a DNF over numbered branch
// propositions); every register, condition bit or memory cell an instruction
// writes receives IF(path condition, new value, old value).
#ifndef VELCOR_SRC_PPC_MACHINE_H
#define VELCOR_SRC_PPC_MACHINE_H

#include <list>
#include <unordered_map>
#include <utility>

#include "DNF.h"
#include "expression.h"
#include "parse.h"
#include "symbols.h"
#include "transition.h"

// Names of the 32 condition-register bits, "cr00" to "cr31".
extern const char* const CR_register[32];

class Annotation {
public:
    Annotation() = default;
    // Writes the annotation to the output file at once.
    Annotation(int a_id, DNF a_formula);

    void print() const;
    int id() const { return m_id; }
    bool isTrue() const { return m_formula.isTrue(); }
    bool isFalse() const { return m_formula.isFalse(); }
    const DNF& formula() const { return m_formula; }
    // The formula, moved out of an annotation that is about to go.
    DNF takeFormula() { return std::move(m_formula); }
    ExpHandle getCond() const { return m_formula.getExp(); }

private:
    int m_id = 0;
    DNF m_formula;
    ExpHandle m_proposition;
};

class Machine {
public:
    Machine() = default;

    void init(Symbols* a_parse_symbol_table);
    DNF getAnnotation(int a_id) const;
    // Removes the lowest-id annotation and returns its formula (false when
    // the list is empty).
    DNF getAndDeleteFirstAnnotation();
    // Puts a_annotation in place of the one of its id and returns it, as it
    // stays until an annotation of that id is taken or set again.
    const Annotation& setAnnotation(Annotation a_annotation, bool a_first);
    static bool isBranch(TOP a_operation);
    // Whether the translation gives the opcode a meaning (values assigned,
    // or the path conditions split) rather than assigning nothing.
    static bool translates(TOP a_operation);
    ExpHandle mayBeIf(bool a_is_true, bool a_is_false, const ExpHandle& a_cond, const ExpHandle& a_then_part,
                      const ExpHandle& a_else_part) const;
    ExpHandle notIf(bool, bool, const ExpHandle&, const ExpHandle& a_then_part, const ExpHandle&) const
    {
        return a_then_part;
    }
    bool isSp(const TN* a_tn) const;
    TN* memoryVar(const TN* a_tn);
    TN* memoryVar(const TN* a_tn, const TN* b_tn);
    // The cell MEM[displacement+name] of a base known by name only.
    TN* memoryVar(const TN* a_tn, const char* a_base_name);
    TN* stackVar(const TN* a_tn);
    long getUnknownMemory() { return ++m_unknownMemory; }
    void unsupported_op(TOP a_operation) const;
    void print(int a_id) const;
    void printAll() const;

    void translate_opcode(Transition* a_transition, TN** a_operands, TOP a_operation, int a_operands_count,
                          int a_destination_count, bool a_destination);

    using Annotations = misc::PooledList<Annotation>;
    const Annotations& annotations() const { return m_annotations; }
    // Forgets every annotation and the operand table (a new run).
    void clear();

private:
    class Step;
    struct MemoryAccess;

    void translateAddImmediate(Step& a_step);
    void translateRotate(Step& a_step, bool a_record);
    // a_base: the base register's value before the instruction (E(3)).
    MemoryAccess memoryAccess(Step& a_step, const ExpHandle& a_base, bool a_store);
    TN* cellOfBase(Step& a_step, const ExpHandle& a_base);
    void translateStore(Step& a_step, bool a_update);
    void translateLoad(Step& a_step, TOP a_operation);
    void setConditionField(Step& a_step, long a_field, const ExpHandle& a_less, const ExpHandle& a_greater,
                           const ExpHandle& a_equal);
    void translateSignedCompare(Step& a_step);
    void translateUnsignedCompare(Step& a_step);
    void translateCopyConditionRegister(Step& a_step);
    bool isBackBranch(int a_id, int a_target_id) const;
    void translateConditionalBranch(Step& a_step);
    void translateBranch(Step& a_step);
    void translateReturn(Step& a_step);

    Symbols* m_parse_symbol_table = nullptr;
    Annotations m_annotations;
    int m_lastAnnotationIndex = 0;
    DNF m_falseDNF;
    long m_unknownMemory = 0;
    const char* m_CR_copy = nullptr;

    // The cell of each displacement from each base operand named so far:
    // naming it again is one lookup instead of making and looking up its
    // name. Base operands belong to the operand table for the whole run, and
    // an operand's name never changes once the table holds it.
    struct CellKeyHash {
        std::size_t operator()(const std::pair<long, const TN*>& a_key) const
        {
            return std::hash<const TN*>()(a_key.second) * 31u + std::hash<long>()(a_key.first);
        }
    };
    std::unordered_map<std::pair<long, const TN*>, TN*, CellKeyHash> m_cells;
};

extern Machine machine;

// The value of a rotate-and-mask instruction for the source value a_exp.
ExpHandle rotateAndMask(long a_from, long a_to, long a_rotation_amount, const ExpHandle& a_exp);
// The sign bit of a_exp AND NOT a_negated.
ExpHandle get_sign_bit_andc(const ExpHandle& a_negated, const ExpHandle& a_exp);
ExpHandle CreateSignBit(const ExpHandle& a_exp);

#endif
