// Collects the operands of the instruction being read and its opcode, and
// hands the complete instruction to the translator, which extends the one
// transition of the program.
#ifndef VELCOR_SRC_RAWTRANSITION_H
#define VELCOR_SRC_RAWTRANSITION_H

#include <memory>
#include <optional>

#include "TN.h"
#include "parse.h"
#include "transition.h"

class RawTransition {
public:
    static constexpr int MAX_OPERANDS = 10;

    RawTransition();
    RawTransition(const RawTransition&) = delete;
    RawTransition& operator=(const RawTransition&) = delete;

    void initRawTransition();
    void startTransition();
    // An eleventh operand ends the run.
    void addOperand(TN& a_operand);
    // The offset of the line's instruction, its first operand. Nothing reads
    // it after the line is translated, so one operand serves every line.
    void addLineAddress(long a_offset);
    void addOperation(TOP a_opcode);
    void endOperation();
    // Whether endOperation hands the instruction to the translator; the
    // exact translation reads the recorded listing instead.
    void setTranslating(bool a_translating) { m_translating = a_translating; }
    Transition* getTransition() { return m_transition.get(); }
    // Drops the transition (a new run starts with initRawTransition).
    void clear();

protected:
    void addPredicatedAssignment(unsigned a_predicate, const char* a_destination, ExpHandle a_value);

private:
    TN* m_operands[MAX_OPERANDS] = {};
    std::optional<TN> m_line_address;
    TOP m_operation = TOP_UNDEFINED;
    int m_operands_count = 0;
    int m_destination_count = 0;
    bool m_destination = true;
    bool m_translating = true;
    std::unique_ptr<Transition> m_transition;
};

extern RawTransition raw_transition;

#endif
