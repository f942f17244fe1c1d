// The meaning of each supported PowerPC instruction: guarded assignments to
// registers, condition bits and memory cells, and the path conditions that
// branches split and join.
#include <cstring>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include "common.h"
#include "machine.h"
#include "misc/stop.h"
#include "misc/trace.h"
#include "misc/writer.h"
#include "propositionhandler.h"

namespace {

// How many operands (the address included) each opcode's translation reads.
int operandsNeeded(TOP a_operation)
{
    switch (a_operation) {
    case addi:
    case addis:
    case fadds:
    case add:
    case subf:
    case fsubs:
    case mulli:
    case mullw:
    case fmuls:
    case divw:
    case andc:
    case orx:
    case stw:
    case stwu:
    case stfs:
    case lwz:
    case lwzu:
    case lfs:
    case cmpi:
    case cmpli:
    case op_cmp:
    case op_cmpl:
    case fcmpu:
    case bc:
        return 4;
    case rlwinm:
    case rlwinm_:
        return 6;
    case neg:
    case cntlzw:
        return 3;
    case mfcr:
    case b:
        return 2;
    default:
        return 1;
    }
}

bool inRange(long a_value, long a_low, long a_high)
{
    return a_value >= a_low && a_value <= a_high;
}

// Whether the numeric fields the translation uses as indexes are usable.
bool fieldsInRange(TOP a_operation, TN** a_operands)
{
    switch (a_operation) {
    case cmpi:
    case cmpli:
    case op_cmp:
    case op_cmpl:
    case fcmpu:
        return inRange(a_operands[1]->TNValue(), 0, 7);
    case bc:
        return inRange(a_operands[2]->TNValue(), 0, 31);
    case rlwinm:
    case rlwinm_:
        return inRange(a_operands[3]->TNValue(), 0, 31) && inRange(a_operands[4]->TNValue(), 0, 31) &&
               inRange(a_operands[5]->TNValue(), 0, 31);
    default:
        return true;
    }
}

ExpHandle binary(operator_t a_operator, const ExpHandle& a_left, const ExpHandle& a_right)
{
    return new BinaryExp(a_operator, a_left, a_right);
}

ExpHandle constant(long a_value)
{
    return new ConstExp(static_cast<int>(static_cast<std::uint32_t>(static_cast<unsigned long>(a_value))));
}

} // namespace

namespace {

// The path condition of a branch, which sets none: the constant true.
const Annotation NO_ANNOTATION;

} // namespace

// The state of one instruction's translation: its operands, the transition
// it extends and its path condition.
class Machine::Step {
public:
    Step(Machine& a_machine, Transition* a_transition, TN** a_operands)
        : m_machine(a_machine), m_transition(a_transition), m_operands(a_operands)
    {
    }

    // E(k): the value of operand k before the instruction, as long as the
    // instruction has not written it yet (read what an update or record
    // form needs first).
    ExpHandle E(int k) { return m_transition->getExp(m_operands[k]); }
    ExpHandle byName(const char* a_name) { return m_transition->getExp(a_name); }
    const char* N(int k) const { return m_operands[k]->TNName(); }
    long V(int k) const { return m_operands[k]->TNValue(); }
    TN* operand(int k) const { return m_operands[k]; }

    // The path condition as an expression, made when first needed.
    const ExpHandle& condition()
    {
        if (m_cond.isNull() && m_guarded)
            m_cond = m_annotation->getCond();
        return m_cond;
    }

    // value where the path condition holds, old where it does not. A path
    // condition that is the constant true or false (most of them) would
    // fold the conditional to one side: it is not made at all.
    ExpHandle guarded(const ExpHandle& a_value, const ExpHandle& a_old)
    {
        if (m_guarded && (m_annotation->isTrue() || m_annotation->isFalse())) {
            if (a_value == a_old)
                return a_value;
            return m_annotation->isTrue() ? a_value : a_old;
        }
        return m_machine.mayBeIf(m_annotation->isTrue(), m_annotation->isFalse(), condition(), a_value, a_old);
    }

    // dest := value under the path condition, old being dest's value before.
    void assign(const char* a_destination, const ExpHandle& a_value, const ExpHandle& a_old)
    {
        m_transition->assign(a_destination, guarded(a_value, a_old));
    }
    void assign(const TN* a_destination, const ExpHandle& a_value, const ExpHandle& a_old)
    {
        m_transition->assign(a_destination, guarded(a_value, a_old));
    }
    void assignOperand(int k, const ExpHandle& a_value) { assign(m_operands[k], a_value, E(k)); }

    Machine& m_machine;
    Transition* m_transition;
    TN** m_operands;
    int m_id = 0;
    // The instruction's path condition, as the machine keeps it while the
    // instruction is translated (a branch has the constant true, and none).
    const Annotation* m_annotation = &NO_ANNOTATION;
    // Whether m_annotation is the instruction's path condition (branches
    // have none).
    bool m_guarded = false;

private:
    ExpHandle m_cond;
};

void Machine::translate_opcode(Transition* a_transition, TN** a_operands, TOP a_operation, int a_operands_count,
                               int, bool)
{
    Step step(*this, a_transition, a_operands);
    // The instruction's id is the value of its address operand, a constant:
    // read from the operand itself, it needs no expression made and dropped.
    if (a_operands_count > 0)
        step.m_id = step.operand(0)->isConst() ? static_cast<std::int32_t>(static_cast<std::uint32_t>(
                                                     static_cast<unsigned long>(step.V(0))))
                                               : step.E(0)->constValue();

    // Checked before anything is written: an instruction that lacks what its
    // translation reads is skipped whole.
    if (a_operands_count < operandsNeeded(a_operation)) {
        std::cerr << "Missing operands for " << topName(a_operation) << " at offset " << step.m_id << '\n';
        return;
    }
    if (!fieldsInRange(a_operation, a_operands)) {
        std::cerr << "Operand out of range for " << topName(a_operation) << " at offset " << step.m_id << '\n';
        return;
    }

    misc::traceOut() << "\n\nTranslating Opcode " << topName(a_operation) << '\n';
    if (!isBranch(a_operation)) {
        DNF gathered = getAnnotation(step.m_id);
        DNF previous = getAndDeleteFirstAnnotation();
        misc::Writer(*getOutFile()) << "% Annotations  id" << step.m_id << "1,2 \n";
        gathered.print();
        previous.print();
        step.m_annotation =
            &setAnnotation(Annotation(step.m_id, simplify(std::move(gathered), std::move(previous))), false);
        step.m_guarded = true;
    } else {
        m_CR_copy = nullptr;
    }

    switch (a_operation) {
    case addi:
    case addis:
    case fadds:
        translateAddImmediate(step);
        break;
    case add:
        step.assignOperand(1, binary(ADD, step.E(2), step.E(3)));
        break;
    case subf:
        step.assignOperand(1, binary(SUB, step.E(3), step.E(2)));
        break;
    case fsubs:
        step.assignOperand(1, binary(SUB, step.E(2), step.E(3)));
        break;
    case mulli:
    case mullw:
    case fmuls:
        step.assignOperand(1, binary(MUL, step.E(2), step.E(3)));
        break;
    case divw:
        step.assignOperand(1, binary(DIV, step.E(2), step.E(3)));
        break;
    case andc: {
        misc::traceErr() << "in translate_opcode with opcode andc" << '\n';
        ExpHandle old = step.byName(step.N(1));
        ExpHandle value = binary(ANDC, step.byName(step.N(2)), step.byName(step.N(3)));
        step.assign(step.N(1), value, old);
        break;
    }
    case neg: {
        misc::traceErr() << "in translate_opcode with opcode = neg" << '\n';
        ExpHandle old = step.byName(step.N(1));
        step.assign(step.N(1), new UnaryExp(NEG, step.byName(step.N(2))), old);
        break;
    }
    case cntlzw:
        misc::traceErr() << "in translate_opcode with opcode cntlzw" << '\n';
        step.assignOperand(1, new UnaryExp(CNTLZW, step.E(2)));
        break;
    case orx:
        // Only the register copy "or rD,rS,rS" has a meaning here.
        if (step.operand(2) == step.operand(3))
            step.assignOperand(1, step.E(2));
        break;
    case rlwinm:
    case rlwinm_:
        translateRotate(step, a_operation == rlwinm_);
        break;
    case stw:
    case stwu:
    case stfs:
        translateStore(step, a_operation == stwu);
        break;
    case lwz:
    case lwzu:
    case lfs:
        translateLoad(step, a_operation);
        break;
    case cmpi:
    case op_cmp:
    case fcmpu:
        translateSignedCompare(step);
        break;
    case cmpli:
    case op_cmpl:
        translateUnsignedCompare(step);
        break;
    case mfcr:
        translateCopyConditionRegister(step);
        break;
    case bc:
        translateConditionalBranch(step);
        break;
    case b:
        translateBranch(step);
        break;
    case bclr:
        translateReturn(step);
        break;
    case ori:
    case mtspr:
        unsupported_op(a_operation);
        break;
    default:
        // bl, mfspr, stmw, lmw and the mnemonics beyond the listing
        // format's table change no value.
        break;
    }
}

bool Machine::translates(TOP a_operation)
{
    // Every opcode the translation gives a meaning reads operands besides
    // its address, but the return.
    return operandsNeeded(a_operation) > 1 || a_operation == bclr;
}

void Machine::translateAddImmediate(Step& a_step)
{
    a_step.operand(1)->setIsAddress(a_step.operand(2)->isAddress() || a_step.operand(3)->isAddress());
    ExpHandle immediate = a_step.E(3);
    ExpHandle value;
    if (std::strcmp(a_step.N(2), "r0") == 0)
        value = immediate;
    else if (immediate->isConst() && immediate->constValue() == 0)
        value = a_step.E(2);
    else
        value = binary(ADD, a_step.E(2), immediate);
    a_step.assignOperand(1, value);
}

void Machine::translateRotate(Step& a_step, bool a_record)
{
    ExpHandle result = rotateAndMask(a_step.V(4), a_step.V(5), a_step.V(3), a_step.E(2));
    // The bits of field 0 as they were before the instruction, read before
    // the destination (which a listing may name after one of them) is set.
    ExpHandle less, greater, equal;
    if (a_record) {
        less = a_step.byName(CR_register[0]);
        greater = a_step.byName(CR_register[1]);
        equal = a_step.byName(CR_register[2]);
    }
    a_step.assignOperand(1, result);
    if (!a_record)
        return;
    // The record form sets field 0 from the result.
    ExpHandle zero = new ConstExp(0);
    a_step.assign(CR_register[0], binary(LT, result, zero), less);
    a_step.assign(CR_register[1], binary(GT, result, zero), greater);
    a_step.assign(CR_register[2], binary(EQ, result, zero), equal);
}

// The memory cell(s) of a load or store: operand 2 is the displacement,
// operand 3 the base register.
struct Machine::MemoryAccess {
    enum Kind { NONE, SINGLE, SPLIT } kind = NONE;
    TN* cell = nullptr;      // SINGLE
    TN* then_cell = nullptr; // SPLIT: the cell under the condition
    TN* else_cell = nullptr; // SPLIT: the cell otherwise
    ExpHandle condition;
};

TN* Machine::cellOfBase(Step& a_step, const ExpHandle& a_base)
{
    if (TN* base = a_base->TNValue())
        return memoryVar(a_step.operand(2), base);
    return memoryVar(a_step.operand(2), a_base->getName());
}

Machine::MemoryAccess Machine::memoryAccess(Step& a_step, const ExpHandle& a_base, bool a_store)
{
    MemoryAccess access;
    if (isSp(a_step.operand(3))) {
        access.kind = MemoryAccess::SINGLE;
        access.cell = stackVar(a_step.operand(2));
        return access;
    }
    const ExpHandle& base = a_base;
    if (!a_store)
        misc::traceOut() << "Type of expression is " << base->m_type << '\n';
    if (base->m_type == VAR_EXP) {
        access.kind = MemoryAccess::SINGLE;
        access.cell = cellOfBase(a_step, base);
    } else if (base->isIf() && base->operand(2)->isVar() && base->operand(3)->isVar()) {
        // A base that is one of two variables: one cell for each.
        access.kind = MemoryAccess::SPLIT;
        access.condition = base->operand(1);
        access.then_cell = cellOfBase(a_step, base->operand(2));
        access.else_cell = cellOfBase(a_step, base->operand(3));
    } else if (!a_store && base->isIf()) {
        // A load through a conditional of other values reads nothing.
    } else {
        misc::traceOut() << (a_store ? "ERROR:  Currently is not supported!!" : "ERROR : Currently is not supported!!")
                  << '\n';
        access.kind = MemoryAccess::SINGLE;
        access.cell = memoryVar(a_step.operand(2));
    }
    return access;
}

void Machine::translateStore(Step& a_step, bool a_update)
{
    // The base's value before the instruction: the store may write a cell
    // of the base's own name (a base called oldSP below its value).
    ExpHandle base = a_step.E(3);
    MemoryAccess access = memoryAccess(a_step, base, true);
    if (access.kind == MemoryAccess::SINGLE) {
        a_step.assign(access.cell, a_step.E(1), a_step.m_transition->getExp(access.cell));
    } else if (access.kind == MemoryAccess::SPLIT) {
        ExpHandle value = a_step.E(1);
        ExpHandle old_then = a_step.m_transition->getExp(access.then_cell);
        ExpHandle old_else = a_step.m_transition->getExp(access.else_cell);
        a_step.assign(access.then_cell, new TrinaryExp(IF, access.condition, value, old_then), old_then);
        a_step.assign(access.else_cell, new TrinaryExp(IF, access.condition, old_else, value), old_else);
    }
    if (a_update)
        a_step.assign(a_step.N(3), binary(ADD, constant(a_step.V(2)), base), base);
}

void Machine::translateLoad(Step& a_step, TOP a_operation)
{
    if (a_operation == lfs)
        misc::traceOut() << "Operand1=" << a_step.N(1) << "\nOperand2=" << a_step.V(2) << "\nOperand3=" << a_step.N(3)
                         << '\n';
    misc::traceOut() << "Operand111=" << a_step.N(1) << "\nOperand2=" << a_step.V(2) << "\nOperand3=" << a_step.N(3)
                     << '\n';
    // The base's value before the instruction: the load may have written
    // the base register itself.
    ExpHandle base = a_step.E(3);
    MemoryAccess access = memoryAccess(a_step, base, false);
    if (access.kind == MemoryAccess::NONE)
        return;
    if (access.kind == MemoryAccess::SINGLE) {
        a_step.assignOperand(1, a_step.m_transition->getExp(access.cell));
    } else {
        ExpHandle old = a_step.E(1);
        ExpHandle from_then =
            mayBeIf(false, false, a_step.condition(), a_step.m_transition->getExp(access.then_cell), old);
        ExpHandle from_else =
            mayBeIf(false, false, a_step.condition(), a_step.m_transition->getExp(access.else_cell), old);
        a_step.m_transition->assign(a_step.N(1), new TrinaryExp(IF, access.condition, from_then, from_else));
    }
    if (a_operation == lwzu)
        a_step.assign(a_step.N(3), binary(ADD, base, constant(a_step.V(2))), base);
}

// Field f of the condition register is bits 4f (less than), 4f+1 (greater
// than) and 4f+2 (equal); the summary-overflow bit is never written.
void Machine::setConditionField(Step& a_step, long a_field, const ExpHandle& a_less, const ExpHandle& a_greater,
                                const ExpHandle& a_equal)
{
    const char* const* bits = &CR_register[4 * a_field];
    ExpHandle old_less = a_step.byName(bits[0]);
    ExpHandle old_greater = a_step.byName(bits[1]);
    ExpHandle old_equal = a_step.byName(bits[2]);
    a_step.assign(bits[0], a_less, old_less);
    a_step.assign(bits[1], a_greater, old_greater);
    a_step.assign(bits[2], a_equal, old_equal);
}

void Machine::translateSignedCompare(Step& a_step)
{
    long field = a_step.V(1);
    ExpHandle left = a_step.E(2);
    ExpHandle right = a_step.E(3);
    if (field == 5) {
        misc::Writer(*getOutFile()) << "% EXpression of cmpi 5";
        left->print(true, TARGET, true);
    }
    ExpHandle equality = binary(EQ, left, right);
    setConditionField(a_step, field, binary(LT, left, right), binary(GT, left, right), equality);
}

void Machine::translateUnsignedCompare(Step& a_step)
{
    ExpHandle left = a_step.E(2);
    ExpHandle right = a_step.E(3);
    // A value that is negative as a signed number is above every immediate.
    ExpHandle negative = binary(GE, constant(-1), left);
    ExpHandle positive = binary(GE, left, constant(0));
    setConditionField(a_step, a_step.V(1), binary(AND, positive, binary(LT, left, right)),
                      binary(OR, negative, binary(GT, left, right)), binary(EQ, left, right));
}

void Machine::translateCopyConditionRegister(Step& a_step)
{
    misc::traceErr() << "In translate_opcode, opcode is mfcr." << '\n'
              << "Assiging to " << a_step.N(1) << '\n'
              << "Creating bit array vector..." << '\n';
    std::vector<ExpHandle> bits;
    bits.reserve(32);
    for (const char* bit : CR_register) {
        misc::traceOut() << " CR NAME " << bit << '\n';
        bits.push_back(new TrinaryExp(IF, a_step.byName(bit), constant(1), constant(0)));
    }
    misc::traceOut() << "TNname = " << a_step.N(1) << '\n';
    a_step.assign(a_step.N(1), new BitArrayExp(bits), a_step.byName(a_step.N(1)));
}

bool Machine::isBackBranch(int a_id, int a_target_id) const
{
    if (a_target_id > a_id)
        return false;
    misc::traceOut() << "CRASH - back branch " << a_id << '\n';
    return true;
}

void Machine::translateConditionalBranch(Step& a_step)
{
    int id = a_step.m_id;
    int target_id = a_step.E(3)->constValue();
    if (isBackBranch(id, target_id))
        return;
    // Taken when the bit is true for BO 8 and above, when it is false below.
    bool polarity = a_step.V(1) > 7;
    misc::traceOut() << " tn name =" << a_step.N(2) << '\n';
    TN* bit = m_parse_symbol_table->getTN(CR_register[a_step.V(2)]);
    ExpHandle condition = bit ? a_step.m_transition->getExp(bit) : a_step.byName(CR_register[a_step.V(2)]);
    int proposition = proposition_handler->setNextProposition(condition);
    DNF current = simplify(getAnnotation(id), getAndDeleteFirstAnnotation());
    DNF at_target = getAnnotation(target_id);
    DNF taken = andDNF(current, proposition, polarity);
    DNF not_taken = andDNF(current, proposition, !polarity);
    Annotation fall_through(id, std::move(not_taken));
    Annotation target(target_id, simplify(std::move(at_target), std::move(taken)));
    setAnnotation(std::move(fall_through), false);
    setAnnotation(std::move(target), false);
}

void Machine::translateBranch(Step& a_step)
{
    int id = a_step.m_id;
    int target_id = a_step.E(1)->constValue();
    if (isBackBranch(id, target_id))
        return;
    DNF own = getAnnotation(id);
    DNF at_target = getAnnotation(target_id);
    DNF previous = getAndDeleteFirstAnnotation();
    Annotation target(target_id, simplify(std::move(at_target), simplify(std::move(own), std::move(previous))));
    Annotation fall_through(id, DNF(false));
    setAnnotation(std::move(target), false);
    setAnnotation(std::move(fall_through), false);
}

void Machine::translateReturn(Step& a_step)
{
    misc::traceErr() << "AAAAAA!!!!" << '\n';
    getAnnotation(a_step.m_id);
    getAndDeleteFirstAnnotation();
    setAnnotation(Annotation(a_step.m_id, DNF(false)), false);
}
