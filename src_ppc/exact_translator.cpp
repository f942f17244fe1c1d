#include "exact_translator.h"

#include <algorithm>
#include <deque>
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
    int m_next = NONE;   // where control goes on to: an instruction or EXIT
    int m_target = NONE; // where a branch goes: an instruction or EXIT
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
    int m_pending = 0;
    std::vector<Incoming> m_incoming;
};

ExactTranslator::ExactTranslator(ExactContext& a_context, std::string a_listing_name, int a_unroll)
    : m_context(a_context), m_terms(a_context.terms()), m_semantics(a_context),
      m_listing_name(std::move(a_listing_name)), m_unroll(a_unroll)
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
    m_flow.assign(m_instructions.size(), Flow());
    for (std::size_t i = 0; i < m_instructions.size(); ++i) {
        ExactInstruction& instruction = m_instructions[i];
        if (!instruction.m_target_operand)
            continue;
        ExactOperand& target = instruction.m_operands[instruction.m_target_operand];
        if (target.m_symbol != node) {
            target.m_external = true;
            continue;
        }
        auto found = index_of.find(target.m_value);
        if (found == index_of.end())
            fail(instruction, "branch target <" + target.m_symbol + "+" + std::to_string(target.m_value) +
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
            fail(instruction, "no exact semantics for bcctr (its targets are unknown)");
        } else {
            flow.m_next = next;
        }
    }
}

// ------------------------------------------------------------------- loops

namespace {

std::vector<int> successorsOf(int a_next, int a_target)
{
    std::vector<int> successors;
    if (a_next >= 0)
        successors.push_back(a_next);
    if (a_target >= 0 && a_target != a_next)
        successors.push_back(a_target);
    return successors;
}

} // namespace

void ExactTranslator::findLoops()
{
    int count = static_cast<int>(m_instructions.size());
    m_header_of.assign(count, -1);
    if (count == 0)
        return;
    std::vector<std::vector<int>> successors(count);
    std::vector<std::vector<int>> predecessors(count);
    for (int i = 0; i < count; ++i) {
        successors[i] = successorsOf(m_flow[i].m_next, m_flow[i].m_target);
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
    std::map<Key, int> instance_of;
    std::deque<int> work;
    auto instanceFor = [&](int a_instruction, std::vector<std::pair<int, int>> a_context) {
        Key key(a_instruction, a_context);
        auto found = instance_of.find(key);
        if (found != instance_of.end())
            return found->second;
        if (m_instances.size() >= MAX_INSTANCES)
            stopCapacity("more than " + std::to_string(MAX_INSTANCES) +
                         " instructions once loops are unrolled (a smaller -unroll bound helps)");
        int id = static_cast<int>(m_instances.size());
        m_instances.emplace_back();
        m_instances.back().m_instruction = a_instruction;
        m_instances.back().m_context = std::move(a_context);
        instance_of.emplace(std::move(key), id);
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
        m_instances[id].m_next = next;
        m_instances[id].m_target = target;
    }
    for (const Instance& instance : m_instances) {
        if (instance.m_next >= 0)
            ++m_instances[instance.m_next].m_pending;
        if (instance.m_target >= 0)
            ++m_instances[instance.m_target].m_pending;
    }
}

// --------------------------------------------------------------- execution

int ExactTranslator::pathChild(int a_parent, Term a_literal)
{
    m_paths.push_back(PathNode{m_terms.andOf(m_paths[a_parent].m_term, a_literal), a_parent, a_literal});
    return static_cast<int>(m_paths.size()) - 1;
}

// Joins the paths that meet: two paths that differ only in the outcome of
// their last branch are that branch's path again, their values chosen by
// the branch's proposition; what is left is chosen by path condition.
void ExactTranslator::merge(std::vector<Incoming>& a_incoming, int& a_path, MachineState& a_state)
{
    for (bool joined = true; joined && a_incoming.size() > 1;) {
        joined = false;
        for (std::size_t i = 0; i < a_incoming.size() && !joined; ++i)
            for (std::size_t j = i + 1; j < a_incoming.size() && !joined; ++j) {
                const PathNode& left = m_paths[a_incoming[i].m_path];
                const PathNode& right = m_paths[a_incoming[j].m_path];
                if (left.m_parent < 0 || left.m_parent != right.m_parent ||
                    left.m_literal != m_terms.notOf(right.m_literal))
                    continue;
                a_incoming[i].m_state = MachineState::choose(m_terms, m_context.floats(), left.m_literal,
                                                             a_incoming[i].m_state, a_incoming[j].m_state);
                a_incoming[i].m_path = left.m_parent;
                a_incoming.erase(a_incoming.begin() + static_cast<long>(j));
                joined = true;
            }
    }
    if (a_incoming.size() == 1) {
        a_path = a_incoming[0].m_path;
        a_state = std::move(a_incoming[0].m_state);
        return;
    }
    Term condition = m_terms.falseTerm();
    for (const Incoming& incoming : a_incoming)
        condition = m_terms.orOf(condition, m_paths[incoming.m_path].m_term);
    m_paths.push_back(PathNode{condition, -1, Term{}});
    a_path = static_cast<int>(m_paths.size()) - 1;
    a_state = a_incoming.back().m_state;
    for (std::size_t k = a_incoming.size() - 1; k-- > 0;)
        a_state = MachineState::choose(m_terms, m_context.floats(), m_paths[a_incoming[k].m_path].m_term,
                                       a_incoming[k].m_state, a_state);
}

Term ExactTranslator::proposition(ExactResult& a_result, Term a_condition)
{
    Term named = m_terms.symbol("p" + std::to_string(a_result.m_propositions.size() + 1), Sort::boolean());
    a_result.m_propositions.push_back(named);
    a_result.m_conditions.push_back(a_condition);
    return named;
}

void ExactTranslator::execute(ExactResult& a_result)
{
    m_paths.clear();
    m_paths.push_back(PathNode{m_terms.trueTerm(), -1, Term{}});
    std::vector<Incoming> exits;
    Term not_unwound = m_terms.falseTerm();
    if (m_instances.empty()) {
        exits.push_back(Incoming{0, MachineState::initial(m_terms)});
    } else {
        m_instances[0].m_incoming.push_back(Incoming{0, MachineState::initial(m_terms)});
    }

    auto send = [&](int a_to, int a_path, const MachineState& a_state) {
        if (m_terms.isFalse(m_paths[a_path].m_term))
            return;
        if (a_to == EXIT)
            exits.push_back(Incoming{a_path, a_state});
        else if (a_to == SINK)
            not_unwound = m_terms.orOf(not_unwound, m_paths[a_path].m_term);
        else if (a_to >= 0)
            m_instances[a_to].m_incoming.push_back(Incoming{a_path, a_state});
    };
    auto release = [&](int a_to, std::deque<int>& a_ready) {
        if (a_to >= 0 && --m_instances[a_to].m_pending == 0)
            a_ready.push_back(a_to);
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
        std::vector<Incoming> incoming = std::move(instance.m_incoming);
        instance.m_incoming.clear();
        if (!incoming.empty()) {
            int path = 0;
            MachineState state;
            merge(incoming, path, state);
            const ExactInstruction& instruction = m_instructions[instance.m_instruction];
            ControlOutcome outcome = m_semantics.execute(instruction, state);
            Term condition = outcome.m_condition;
            // Where control goes when the instruction's condition holds.
            int taken = NONE;
            MachineState taken_state = state;
            switch (outcome.m_kind) {
            case ControlOutcome::NEXT:
                condition = m_terms.falseTerm();
                break;
            case ControlOutcome::BRANCH:
                taken = target;
                break;
            case ControlOutcome::RETURN:
                taken = EXIT;
                break;
            case ControlOutcome::CALL:
                taken = next;
                m_semantics.unknownCall(taken_state);
                break;
            case ControlOutcome::TAIL_CALL:
                taken = EXIT;
                m_semantics.unknownCall(taken_state);
                break;
            case ControlOutcome::COMPUTED:
                fail(instruction, "no exact semantics for " + instruction.m_mnemonic + " (its targets are unknown)");
            }
            if (m_terms.isTrue(condition)) {
                send(taken, path, taken_state);
            } else if (m_terms.isFalse(condition)) {
                send(next, path, state);
            } else {
                Term p = proposition(a_result, condition);
                send(taken, pathChild(path, p), taken_state);
                send(next, pathChild(path, m_terms.notOf(p)), state);
            }
        }
        release(next, ready);
        release(target, ready);
    }

    a_result.m_unwound = m_terms.notOf(not_unwound);
    if (exits.empty()) {
        a_result.m_leaves = false;
        return;
    }
    int path = 0;
    merge(exits, path, a_result.m_final);
    a_result.m_leaves = true;
}

ExactResult ExactTranslator::translate(const std::vector<ListingInstruction>& a_lines)
{
    ExactResult result;
    prepare(a_lines);
    buildFlow();
    findLoops();
    unroll();
    for (const ExactInstruction& instruction : m_instructions) {
        const std::string& m = instruction.m_mnemonic;
        bool float_mnemonic = m[0] == 'f' || m.compare(0, 2, "lf") == 0 || m.compare(0, 3, "stf") == 0;
        if (float_mnemonic)
            result.m_uses_floats = true;
    }
    execute(result);
    return result;
}
