// The exact translation of a node: its instructions become one transition
// from the state before the code to the state after it, as bit-precise
// terms. Control flow is followed as it is: forward and backward branches,
// loops unrolled up to a bound, calls with unknown effect, every exit. The
// path condition of every instruction is exact (the conditions of the
// branches taken to reach it); where paths meet, each value is the one of
// the path that was taken.
#ifndef VELCOR_SRC_PPC_EXACT_TRANSLATOR_H
#define VELCOR_SRC_PPC_EXACT_TRANSLATOR_H

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "exact_semantics.h"
#include "listing_program.h"
#include "machine_state.h"
#include "smt_term.h"

struct ExactResult {
    // The state after the code, on the paths that leave it (null terms when
    // none does).
    MachineState m_final;
    bool m_leaves = false;
    // Every path left the loops within the bound (and every computed branch
    // went to a target that was found).
    smt::Term m_unwound;
    // The branch propositions p1, p2, ... and the condition each stands for.
    std::vector<smt::Term> m_propositions;
    std::vector<smt::Term> m_conditions;
    bool m_uses_floats = false;
};

class ExactTranslator {
public:
    static constexpr int DEFAULT_UNROLL = 64;
    // At most this many instructions once loops are unrolled, by default
    // (each costs a few hundred bytes with its terms). Embeddings with less
    // memory to spare may lower it.
    static constexpr std::size_t MAX_INSTANCES = 500000;
    static void setInstanceLimit(std::size_t a_limit) { s_instance_limit = a_limit; }
    // At most this many entries are read from one jump table.
    static constexpr int MAX_TABLE_ENTRIES = 4096;

    // a_listing_name names the listing in messages; a_constants (or null)
    // holds the bytes the code may read as constants: jump tables among
    // them.
    ExactTranslator(const ConstantMemory* a_constants, std::string a_listing_name, int a_unroll = DEFAULT_UNROLL);
    ~ExactTranslator();

    // Translates the listing's instructions; ends the run with one message
    // line per instruction that has no exact meaning.
    ExactResult translate(const std::vector<ListingInstruction>& a_lines);

    // The terms and fresh values of the result.
    smt::TermTable& terms() { return *m_terms; }
    const ExactContext& context() const { return *m_context; }

private:
    struct Flow;
    struct Instance;
    struct PathNode;
    struct Incoming;

    void prepare(const std::vector<ListingInstruction>& a_lines);
    void buildFlow();
    void findLoops();
    void unroll();
    // One walk over the instances; false when it met a computed branch
    // with targets that the flow did not know yet (they are added).
    bool execute(ExactResult& a_result);
    [[noreturn]] void fail(const ExactInstruction& a_instruction, const std::string& a_message) const;
    // The instructions a computed branch can go to, read from the jump
    // table its count register was loaded from.
    std::vector<int> tableTargets(const ExactInstruction& a_instruction, smt::Term a_target_address);

    int pathChild(int a_parent, smt::Term a_literal);
    void merge(std::vector<Incoming>& a_incoming, int& a_path, MachineState& a_state);
    smt::Term proposition(ExactResult& a_result, smt::Term a_condition);

    static std::size_t s_instance_limit;

    const ConstantMemory* m_constants;
    std::unique_ptr<smt::TermTable> m_terms;
    std::unique_ptr<ExactContext> m_context;
    std::unique_ptr<ExactSemantics> m_semantics;
    std::string m_listing_name;
    int m_unroll;
    // Instruction index of each address (the first instruction at it).
    std::unordered_map<std::uint32_t, int> m_index_of_address;
    // The targets found so far for each computed branch (by instruction).
    std::unordered_map<int, std::vector<int>> m_computed_targets;

    std::vector<ExactInstruction> m_instructions;
    std::vector<Flow> m_flow;
    std::vector<std::vector<int>> m_loop_body; // by header: whether each instruction is inside (0/1)
    std::vector<int> m_header_of;              // loop index of a header instruction, or -1
    std::vector<Instance> m_instances;
    std::vector<PathNode> m_paths;
};

#endif
