#include "exact_translator.h"

#include <algorithm>
#include <deque>
#include <functional>
#include <map>
#include <unordered_map>
#include <utility>

#include "misc/stop.h"

using smt::Sort;
using smt::Term;

namespace {

// Where control can go besides an instruction of the node.
constexpr int EXIT = -1; // leaves the node
constexpr int SINK = -2; // a loop went round more often than the bound
constexpr int NONE = -3; // nowhere

// Branch options that test neither a condition bit nor the count.
bool branchesAlways(long a_options)
{
    return (a_options & 0x14) == 0x14;
}

} // namespace

struct ExactTranslator::Flow {
    int m_next = NONE;        // where control goes on to: an instruction or EXIT
    int m_target = NONE;      // where a branch goes: an instruction or EXIT
    std::vector<int> m_table; // where a computed branch goes: instructions
};

struct ExactTranslator::PathNode {
    Term m_term;      // the path condition
    int m_parent;     // the path it extends by m_literal, or -1
    Term m_literal;
};

struct ExactTranslator::Incoming {
    int m_path;
    MachineState m_state;
};

struct ExactTranslator::Instance {
    int m_instruction = 0;
    std::vector<std::pair<int, int>> m_context; // (loop, iteration) of the loops around it
    int m_next = NONE;                          // instance, EXIT, SINK or NONE
    int m_target = NONE;
    std::vector<int> m_table;                   // instances of the flow's m_table
    int m_pending = 0;
    std::vector<Incoming> m_incoming;
};

std::size_t ExactTranslator::s_instance_limit = ExactTranslator::MAX_INSTANCES;

ExactTranslator::ExactTranslator(const ConstantMemory* a_constants, std::string a_listing_name, int a_unroll)
    : m_constants(a_constants), m_listing_name(std::move(a_listing_name)), m_unroll(a_unroll)
{
}

ExactTranslator::~ExactTranslator() = default;

void ExactTranslator::fail(const ExactInstruction& a_instruction, const std::string& a_message) const
{
    stopRun(m_listing_name + ":" + std::to_string(a_instruction.m_line) + ": " + a_message + "\n");
}

// ------------------------------------------------------------------ prepare

void ExactTranslator::prepare(const std::vector<ListingInstruction>& a_lines)
{
    std::string messages;
    m_instructions.resize(a_lines.size());
    for (std::size_t i = 0; i < a_lines.size(); ++i) {
        std::string message = ExactSemantics::prepare(a_lines[i], m_instructions[i]);
        if (!message.empty())
            messages += m_listing_name + ":" + std::to_string(a_lines[i].m_line) + ": " + message + "\n";
    }
    if (!messages.empty())
        stopRun(messages);
    if (m_instructions.empty())
        return;

    // Targets named by the node's own symbol are its instructions, found by
    // their offsets; any other symbol is another function.
    const std::string& node = a_lines[0].m_symbol;
    std::unordered_map<long, int> index_of;
    for (std::size_t i = 0; i < m_instructions.size(); ++i)
        if (!index_of.emplace(m_instructions[i].m_offset, static_cast<int>(i)).second)
            fail(m_instructions[i], "offset " + std::to_string(m_instructions[i].m_offset) +
                                        " is the offset of an earlier instruction too");
    for (std::size_t i = 0; i < m_instructions.size(); ++i) {
        m_index_of_address.emplace(m_instructions[i].m_address, static_cast<int>(i));
        // A computed branch that decrements the count register is an
        // invalid form: the count is its target.
        if (m_instructions[i].m_mnemonic.compare(0, 5, "bcctr") == 0 && !(m_instructions[i].m_operands[1].m_value & 0x4))
            fail(m_instructions[i], "invalid form of " + m_instructions[i].m_mnemonic +
                                        " (it would decrement the count register it branches to)");
    }
    m_flow.assign(m_instructions.size(), Flow());
    for (std::size_t i = 0; i < m_instructions.size(); ++i) {
        ExactInstruction& instruction = m_instructions[i];
        if (!instruction.m_target_operand)
            continue;
        ExactOperand& target = instruction.m_operands[instruction.m_target_operand];
        if (*target.m_symbol != node) {
            target.m_external = true;
            continue;
        }
        auto found = index_of.find(target.m_value);
        if (found == index_of.end())
            fail(instruction, "branch target <" + *target.m_symbol + "+" + std::to_string(target.m_value) +
                                  "> is not an instruction of the listing");
        m_flow[i].m_target = found->second;
    }
}

// The places control can reach from each instruction, whatever the values.
void ExactTranslator::buildFlow()
{
    int count = static_cast<int>(m_instructions.size());
    for (int i = 0; i < count; ++i) {
        const ExactInstruction& instruction = m_instructions[i];
        const std::string& m = instruction.m_mnemonic;
        Flow& flow = m_flow[i];
        auto known = m_computed_targets.find(i);
        flow.m_table = known == m_computed_targets.end() ? std::vector<int>() : known->second;
        int next = i + 1 < count ? i + 1 : EXIT;
        bool external = instruction.m_target_operand && instruction.m_operands[instruction.m_target_operand].m_external;
        bool always = m == "b" || ((m == "bc" || m == "bclr" || m == "bcctr") && branchesAlways(instruction.m_operands[1].m_value));
        if (m == "b" || m == "bc" || m == "bcl") {
            if (external)
                flow.m_target = m == "bcl" ? NONE : EXIT; // a call goes on after it
            flow.m_next = always ? NONE : next;
        } else if (m == "bclr") {
            flow.m_target = EXIT;
            flow.m_next = always ? NONE : next;
        } else if (m == "bcctr") {
            flow.m_next = always ? NONE : next;
        } else {
            flow.m_next = next;
        }
    }
}

// ------------------------------------------------------------------- loops

namespace {

std::vector<int> successorsOf(int a_next, int a_target, const std::vector<int>& a_table)
{
    std::vector<int> successors;
    if (a_next >= 0)
        successors.push_back(a_next);
    if (a_target >= 0 && a_target != a_next)
        successors.push_back(a_target);
    for (int target : a_table)
        if (std::find(successors.begin(), successors.end(), target) == successors.end())
            successors.push_back(target);
    return successors;
}

} // namespace

void ExactTranslator::findLoops()
{
    int count = static_cast<int>(m_instructions.size());
    m_header_of.assign(count, -1);
    m_loop_body.clear();
    if (count == 0)
        return;
    // Without a branch back (or a computed one) there is no loop to find.
    bool backward = false;
    for (int i = 0; i < count && !backward; ++i)
        backward = (m_flow[i].m_target >= 0 && m_flow[i].m_target <= i) || !m_flow[i].m_table.empty();
    if (!backward)
        return;
    std::vector<std::vector<int>> successors(count);
    std::vector<std::vector<int>> predecessors(count);
    for (int i = 0; i < count; ++i) {
        successors[i] = successorsOf(m_flow[i].m_next, m_flow[i].m_target, m_flow[i].m_table);
        for (int successor : successors[i])
            predecessors[successor].push_back(i);
    }

    // Depth-first from the entry: the retreating edges, and a reverse
    // post-order for the dominators.
    std::vector<char> color(count, 0); // 0 unseen, 1 on the stack, 2 done
    std::vector<int> postorder;
    std::vector<std::pair<int, int>> retreating;
    std::vector<std::pair<int, std::size_t>> stack{{0, 0}};
    color[0] = 1;
    while (!stack.empty()) {
        int node = stack.back().first;
        std::size_t& next = stack.back().second;
        if (next < successors[node].size()) {
            int successor = successors[node][next++];
            if (color[successor] == 0) {
                color[successor] = 1;
                stack.emplace_back(successor, 0);
            } else if (color[successor] == 1) {
                retreating.emplace_back(node, successor);
            }
            continue;
        }
        color[node] = 2;
        postorder.push_back(node);
        stack.pop_back();
    }
    if (retreating.empty())
        return;

    // Immediate dominators (iterative, over the reverse post-order).
    std::vector<int> order_of(count, -1);
    for (std::size_t i = 0; i < postorder.size(); ++i)
        order_of[postorder[i]] = static_cast<int>(i);
    std::vector<int> dominator(count, -1);
    dominator[0] = 0;
    for (bool changed = true; changed;) {
        changed = false;
        for (auto node = postorder.rbegin(); node != postorder.rend(); ++node) {
            if (*node == 0)
                continue;
            int chosen = -1;
            for (int predecessor : predecessors[*node]) {
                if (dominator[predecessor] < 0)
                    continue;
                if (chosen < 0) {
                    chosen = predecessor;
                    continue;
                }
                int left = chosen;
                int right = predecessor;
                while (left != right) {
                    while (order_of[left] < order_of[right])
                        left = dominator[left];
                    while (order_of[right] < order_of[left])
                        right = dominator[right];
                }
                chosen = left;
            }
            if (chosen >= 0 && dominator[*node] != chosen) {
                dominator[*node] = chosen;
                changed = true;
            }
        }
    }
    auto dominates = [&](int a_header, int a_node) {
        for (int node = a_node;; node = dominator[node]) {
            if (node == a_header)
                return true;
            if (node == 0)
                return false;
        }
    };

    // Natural loops: a header and what reaches the edges back to it
    // without passing it. Other cycles have no single entry to count at.
    for (const auto& edge : retreating) {
        int source = edge.first;
        int header = edge.second;
        if (!dominates(header, source))
            fail(m_instructions[source], "no exact semantics for a cycle entered at more than one place (" +
                                              m_instructions[source].m_mnemonic + " back into it)");
        if (m_header_of[header] < 0) {
            m_header_of[header] = static_cast<int>(m_loop_body.size());
            m_loop_body.emplace_back(count, 0);
            m_loop_body.back()[header] = 1;
        }
        std::vector<int>& body = m_loop_body[m_header_of[header]];
        std::vector<int> work{source};
        while (!work.empty()) {
            int node = work.back();
            work.pop_back();
            if (body[node])
                continue;
            body[node] = 1;
            for (int predecessor : predecessors[node])
                work.push_back(predecessor);
        }
    }
}

// The acyclic graph of instruction instances: an instruction inside loops
// is one instance per iteration of each loop around it, up to the bound;
// the edge back past the bound goes to the sink.
void ExactTranslator::unroll()
{
    m_instances.clear();
    if (m_instructions.empty())
        return;
    using Key = std::pair<int, std::vector<std::pair<int, int>>>;
    // Instances outside every loop, by instruction: most code is there.
    std::vector<int> outside_loops(m_instructions.size(), -1);
    std::map<Key, int> instance_of;
    std::deque<int> work;
    m_instances.reserve(m_instructions.size());
    auto instanceFor = [&](int a_instruction, std::vector<std::pair<int, int>> a_context) {
        int* known = nullptr;
        if (a_context.empty()) {
            known = &outside_loops[a_instruction];
        } else {
            auto found = instance_of.find(Key(a_instruction, a_context));
            if (found != instance_of.end())
                return found->second;
        }
        if (known && *known >= 0)
            return *known;
        if (m_instances.size() >= s_instance_limit)
            stopCapacity("more than " + std::to_string(s_instance_limit) +
                         " instructions once loops are unrolled (a smaller -unroll bound helps)");
        int id = static_cast<int>(m_instances.size());
        m_instances.emplace_back();
        m_instances.back().m_instruction = a_instruction;
        if (known)
            *known = id;
        else
            instance_of.emplace(Key(a_instruction, a_context), id);
        m_instances.back().m_context = std::move(a_context);
        work.push_back(id);
        return id;
    };
    auto follow = [&](int a_from, int a_to) -> int {
        if (a_to < 0)
            return a_to;
        const std::vector<std::pair<int, int>>& context = m_instances[a_from].m_context;
        std::vector<std::pair<int, int>> next;
        for (const auto& loop : context)
            if (m_loop_body[loop.first][a_to])
                next.push_back(loop);
        int loop = m_header_of[a_to];
        if (loop >= 0) {
            bool back = m_loop_body[loop][m_instances[a_from].m_instruction] != 0;
            if (back) {
                auto entry = std::find_if(next.begin(), next.end(),
                                          [loop](const std::pair<int, int>& a_entry) { return a_entry.first == loop; });
                VELCOR_ASSERT(entry != next.end());
                if (entry->second >= m_unroll)
                    return SINK;
                ++entry->second;
            } else {
                next.emplace_back(loop, 1);
            }
        }
        return instanceFor(a_to, std::move(next));
    };

    std::vector<std::pair<int, int>> entry_context;
    if (m_header_of[0] >= 0)
        entry_context.emplace_back(m_header_of[0], 1);
    instanceFor(0, entry_context);
    while (!work.empty()) {
        int id = work.front();
        work.pop_front();
        const Flow& flow = m_flow[m_instances[id].m_instruction];
        int next = flow.m_next == NONE ? NONE : follow(id, flow.m_next);
        int target = flow.m_target == NONE ? NONE : follow(id, flow.m_target);
        std::vector<int> table;
        for (int entry : flow.m_table)
            table.push_back(follow(id, entry));
        m_instances[id].m_next = next;
        m_instances[id].m_target = target;
        m_instances[id].m_table = std::move(table);
    }
    for (const Instance& instance : m_instances) {
        if (instance.m_next >= 0)
            ++m_instances[instance.m_next].m_pending;
        if (instance.m_target >= 0)
            ++m_instances[instance.m_target].m_pending;
        for (int entry : instance.m_table)
            if (entry >= 0)
                ++m_instances[entry].m_pending;
    }
}

// --------------------------------------------------------------- execution

int ExactTranslator::pathChild(int a_parent, Term a_literal)
{
    m_paths.push_back(PathNode{m_terms->andOf(m_paths[a_parent].m_term, a_literal), a_parent, a_literal});
    return static_cast<int>(m_paths.size()) - 1;
}

// Joins the paths that meet. The paths form a tree: each extends its
// parent by one branch's outcome. Where both outcomes of a branch arrive,
// their values are chosen by the branch's proposition, and where they
// arrive whole, so is their parent; paths of different trees (joined
// earlier without a common branch) are chosen by their path conditions.
void ExactTranslator::merge(std::vector<Incoming>& a_incoming, int& a_path, MachineState& a_state)
{
    // Straight-line code: one way in, nothing to join.
    if (a_incoming.size() == 1) {
        a_path = a_incoming[0].m_path;
        a_state = std::move(a_incoming[0].m_state);
        return;
    }
    // Each path from its root down.
    std::vector<std::vector<int>> chains(a_incoming.size());
    for (std::size_t i = 0; i < a_incoming.size(); ++i) {
        for (int node = a_incoming[i].m_path; node >= 0; node = m_paths[node].m_parent)
            chains[i].push_back(node);
        std::reverse(chains[i].begin(), chains[i].end());
    }
    // The entries below one path node (at chain position a_depth), merged.
    std::function<int(std::vector<std::size_t>&, std::size_t, MachineState&)> below =
        [&](std::vector<std::size_t>& a_entries, std::size_t a_depth, MachineState& a_merged) -> int {
        if (a_entries.size() == 1) {
            a_merged = std::move(a_incoming[a_entries[0]].m_state);
            return a_incoming[a_entries[0]].m_path;
        }
        // Disjoint paths: none of several stops here; they part by the
        // next branch's outcome.
        for (std::size_t entry : a_entries)
            VELCOR_ASSERT(chains[entry].size() > a_depth + 1);
        int node = chains[a_entries[0]][a_depth];
        std::vector<std::size_t> taken;
        std::vector<std::size_t> other;
        Term literal = m_paths[chains[a_entries[0]][a_depth + 1]].m_literal;
        for (std::size_t entry : a_entries)
            (m_paths[chains[entry][a_depth + 1]].m_literal == literal ? taken : other).push_back(entry);
        MachineState taken_state;
        int taken_path = below(taken, a_depth + 1, taken_state);
        if (other.empty()) {
            a_merged = std::move(taken_state);
            return taken_path;
        }
        MachineState other_state;
        int other_path = below(other, a_depth + 1, other_state);
        a_merged = MachineState::choose(*m_terms, m_context->floats(), literal, taken_state, other_state);
        bool whole = m_paths[taken_path].m_parent == node && m_paths[other_path].m_parent == node;
        if (whole)
            return node;
        m_paths.push_back(PathNode{m_terms->orOf(m_paths[taken_path].m_term, m_paths[other_path].m_term), -1, Term{}});
        return static_cast<int>(m_paths.size()) - 1;
    };

    // One tree at a time, then the trees by their conditions.
    std::vector<std::pair<int, MachineState>> trees;
    std::vector<bool> done(a_incoming.size(), false);
    for (std::size_t i = 0; i < a_incoming.size(); ++i) {
        if (done[i])
            continue;
        std::vector<std::size_t> entries;
        for (std::size_t j = i; j < a_incoming.size(); ++j)
            if (!done[j] && chains[j][0] == chains[i][0]) {
                entries.push_back(j);
                done[j] = true;
            }
        MachineState merged;
        int path = below(entries, 0, merged);
        trees.emplace_back(path, std::move(merged));
    }
    if (trees.size() == 1) {
        a_path = trees[0].first;
        a_state = std::move(trees[0].second);
        return;
    }
    Term condition = m_terms->falseTerm();
    for (const auto& tree : trees)
        condition = m_terms->orOf(condition, m_paths[tree.first].m_term);
    m_paths.push_back(PathNode{condition, -1, Term{}});
    a_path = static_cast<int>(m_paths.size()) - 1;
    a_state = trees.back().second;
    for (std::size_t k = trees.size() - 1; k-- > 0;)
        a_state = MachineState::choose(*m_terms, m_context->floats(), m_paths[trees[k].first].m_term,
                                       trees[k].second, a_state);
}

Term ExactTranslator::proposition(ExactResult& a_result, Term a_condition)
{
    Term named = m_terms->symbol("p" + std::to_string(a_result.m_propositions.size() + 1), Sort::boolean());
    a_result.m_propositions.push_back(named);
    a_result.m_conditions.push_back(a_condition);
    return named;
}

namespace {

// Whether a_term is a word loaded byte by byte, big-endian, from four
// consecutive addresses base+offset .. base+offset+3 of one base.
bool isWordLoad(const smt::TermTable& a_terms, Term a_term, std::uint64_t& a_offset)
{
    Term bytes[4];
    Term at = a_term;
    for (int i = 3; i > 0; --i) {
        if (a_terms.op(at) != smt::Op::Concat)
            return false;
        bytes[i] = a_terms.child(at, 1);
        at = a_terms.child(at, 0);
    }
    bytes[0] = at;
    Term first_base;
    for (int i = 0; i < 4; ++i) {
        if (a_terms.op(bytes[i]) != smt::Op::Select)
            return false;
        Term base;
        std::uint64_t offset = 0;
        a_terms.splitOffset(a_terms.child(bytes[i], 1), base, offset);
        if (i == 0) {
            first_base = base;
            a_offset = offset;
        }
        if (base.isNull() || base != first_base || smt::truncate(offset - a_offset, 32) != std::uint64_t(i))
            return false;
    }
    return true;
}

} // namespace

std::vector<int> ExactTranslator::tableTargets(const ExactInstruction& a_instruction, Term a_target_address)
{
    smt::TermTable& terms = *m_terms;
    std::vector<int> targets;
    auto instructionAt = [&](std::uint64_t a_address) {
        auto found = m_index_of_address.find(static_cast<std::uint32_t>(a_address));
        return found == m_index_of_address.end() ? -1 : found->second;
    };
    if (terms.op(a_target_address) == smt::Op::BvConst) {
        int target = instructionAt(terms.constValue(a_target_address));
        if (target < 0)
            fail(a_instruction, "no exact semantics for " + a_instruction.m_mnemonic +
                                    " (its target is not an instruction of the node)");
        targets.push_back(target);
        return targets;
    }
    // The address came from a table of words in the executable's constants
    // (an entry for each case of a switch): each entry put in its place
    // gives one target. The entries run until one leads outside the node.
    Term load;
    std::uint64_t table = 0;
    std::vector<Term> work{a_target_address};
    while (!work.empty() && load.isNull()) {
        Term term = work.back();
        work.pop_back();
        if (terms.width(term) == 32 && isWordLoad(terms, term, table)) {
            load = term;
            break;
        }
        for (int i = 0; i < terms.node(term).m_arity; ++i)
            if (terms.sort(terms.child(term, i)).isBitVec())
                work.push_back(terms.child(term, i));
    }
    int entries = 0;
    for (int k = 0; !load.isNull() && m_constants && k < MAX_TABLE_ENTRIES; ++k) {
        std::uint32_t entry = 0;
        bool readable = true;
        for (int i = 0; i < 4 && readable; ++i) {
            std::uint8_t byte = 0;
            readable = m_constants->readByte(static_cast<std::uint32_t>(table + 4u * k + i), byte);
            entry = (entry << 8) | byte;
        }
        if (!readable)
            break;
        Term address = terms.replace(a_target_address, load, terms.bitVec(32, entry));
        if (terms.op(address) != smt::Op::BvConst)
            break;
        int target = instructionAt(terms.constValue(address));
        if (target < 0)
            break;
        if (std::find(targets.begin(), targets.end(), target) == targets.end())
            targets.push_back(target);
        entries = k + 1;
    }
    // The table's entries are what the executable holds.
    m_context->pinConstants(static_cast<std::uint32_t>(table), 4u * static_cast<std::uint32_t>(entries));
    if (targets.empty())
        fail(a_instruction, "no exact semantics for " + a_instruction.m_mnemonic +
                                " (its targets are not in a table of the executable that velcor can read)");
    return targets;
}

bool ExactTranslator::execute(ExactResult& a_result)
{
    m_paths.clear();
    m_paths.push_back(PathNode{m_terms->trueTerm(), -1, Term{}});
    std::vector<Incoming> exits;
    Term not_unwound = m_terms->falseTerm();
    if (m_instances.empty()) {
        exits.push_back(Incoming{0, MachineState::initial(*m_terms)});
    } else {
        m_instances[0].m_incoming.push_back(Incoming{0, MachineState::initial(*m_terms)});
    }

    auto send = [&](int a_to, int a_path, const MachineState& a_state) {
        if (m_terms->isFalse(m_paths[a_path].m_term))
            return;
        if (a_to == EXIT)
            exits.push_back(Incoming{a_path, a_state});
        else if (a_to == SINK)
            not_unwound = m_terms->orOf(not_unwound, m_paths[a_path].m_term);
        else if (a_to >= 0)
            m_instances[a_to].m_incoming.push_back(Incoming{a_path, a_state});
    };
    auto release = [&](int a_to, std::deque<int>& a_ready) {
        if (a_to >= 0 && --m_instances[a_to].m_pending == 0)
            a_ready.push_back(a_to);
    };
    // Splits a_path on a_condition: the part where it holds is sent to
    // a_taken, the rest is returned.
    auto branch = [&](int a_path, Term a_condition, int a_taken, const MachineState& a_taken_state) {
        if (m_terms->isTrue(a_condition)) {
            send(a_taken, a_path, a_taken_state);
            return -1;
        }
        if (m_terms->isFalse(a_condition))
            return a_path;
        Term p = proposition(a_result, a_condition);
        send(a_taken, pathChild(a_path, p), a_taken_state);
        return pathChild(a_path, m_terms->notOf(p));
    };

    std::deque<int> ready;
    if (!m_instances.empty())
        ready.push_back(0);
    while (!ready.empty()) {
        int id = ready.front();
        ready.pop_front();
        Instance& instance = m_instances[id];
        int next = instance.m_next;
        int target = instance.m_target;
        std::vector<int> table = instance.m_table;
        std::vector<Incoming> incoming = std::move(instance.m_incoming);
        instance.m_incoming.clear();
        if (!incoming.empty()) {
            int path = 0;
            MachineState state;
            merge(incoming, path, state);
            const ExactInstruction& instruction = m_instructions[instance.m_instruction];
            ControlOutcome outcome = m_semantics->execute(instruction, state);
            Term condition = outcome.m_condition;
            int rest = path;
            switch (outcome.m_kind) {
            case ControlOutcome::NEXT:
                break;
            case ControlOutcome::BRANCH:
                rest = branch(path, condition, target, state);
                break;
            case ControlOutcome::RETURN:
                rest = branch(path, condition, EXIT, state);
                break;
            case ControlOutcome::CALL:
            case ControlOutcome::TAIL_CALL: {
                MachineState called = state;
                m_semantics->unknownCall(called);
                rest = branch(path, condition, outcome.m_kind == ControlOutcome::CALL ? next : EXIT, called);
                break;
            }
            case ControlOutcome::COMPUTED: {
                std::vector<int> targets = tableTargets(instruction, state.m_ctr);
                std::vector<int>& known = m_computed_targets[instance.m_instruction];
                bool more = false;
                for (int found : targets)
                    if (std::find(known.begin(), known.end(), found) == known.end()) {
                        known.push_back(found);
                        more = true;
                    }
                if (more)
                    return false; // the flow changes: the walk starts again
                // Where the condition holds, one target after the other by
                // the address in the count register; an address that none
                // has leaves the known paths.
                int taken = m_terms->isTrue(condition) ? path : -1;
                if (taken < 0) {
                    Term p = proposition(a_result, condition);
                    taken = pathChild(path, p);
                    rest = pathChild(path, m_terms->notOf(p));
                } else {
                    rest = -1;
                }
                const std::vector<int>& flow_table = m_flow[instance.m_instruction].m_table;
                for (std::size_t k = 0; k < flow_table.size() && taken >= 0; ++k) {
                    Term here = m_terms->eq(state.m_ctr, m_terms->bitVec(32, m_instructions[flow_table[k]].m_address));
                    taken = branch(taken, here, table[k], state);
                }
                if (taken >= 0)
                    send(SINK, taken, state);
                break;
            }
            }
            if (rest >= 0)
                send(next, rest, state);
        }
        release(next, ready);
        release(target, ready);
        for (int entry : table)
            release(entry, ready);
    }

    a_result.m_unwound = m_terms->notOf(not_unwound);
    if (exits.empty()) {
        a_result.m_leaves = false;
        return true;
    }
    int path = 0;
    merge(exits, path, a_result.m_final);
    a_result.m_leaves = true;
    return true;
}

ExactResult ExactTranslator::translate(const std::vector<ListingInstruction>& a_lines)
{
    prepare(a_lines);
    // Each round that meets a computed branch with new targets adds them to
    // the flow, so rounds are at most as many as the instructions.
    for (;;) {
        m_terms = std::make_unique<smt::TermTable>();
        m_context = std::make_unique<ExactContext>(*m_terms, m_constants);
        m_semantics = std::make_unique<ExactSemantics>(*m_context);
        buildFlow();
        findLoops();
        unroll();
        // About six terms for each instruction the walk executes.
        m_terms->reserve(6 * m_instances.size());
        ExactResult result;
        for (const ExactInstruction& instruction : m_instructions) {
            const std::string& m = instruction.m_mnemonic;
            if (m[0] == 'f' || m.compare(0, 2, "lf") == 0 || m.compare(0, 3, "stf") == 0)
                result.m_uses_floats = true;
        }
        if (execute(result))
            return result;
    }
}
