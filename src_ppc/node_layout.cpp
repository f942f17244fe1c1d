#include "node_layout.h"

#include <algorithm>
#include <string>

#include "misc/stop.h"

namespace {

constexpr int NO_INSTRUCTION = -1;

// BO with both "ignore the condition" and "ignore the count" set.
bool branchesAlways(int a_options)
{
    return (a_options & 0x14) == 0x14;
}

// The control flow of the node's instructions, and the strongly connected
// parts of it.
class ControlFlow {
public:
    explicit ControlFlow(const std::vector<DecodedInstruction>& a_code) : m_code(a_code)
    {
        const int count = static_cast<int>(a_code.size());
        m_successors.resize(count);
        m_returns.assign(count, false);
        m_indirect.assign(count, false);
        for (int i = 0; i < count; ++i)
            classify(i);
        findComponents();
    }

    int size() const { return static_cast<int>(m_code.size()); }

    // The index of the instruction at a_address, or NO_INSTRUCTION.
    int indexOf(std::uint32_t a_address) const
    {
        const std::uint32_t distance = a_address - m_code.front().m_address;
        if (distance % 4 != 0 || distance / 4 >= m_code.size())
            return NO_INSTRUCTION;
        return static_cast<int>(distance / 4);
    }

    // The in-node target of instruction a_index's branch operand, or
    // NO_INSTRUCTION.
    int targetOf(int a_index) const
    {
        const DecodedOperand* target = m_code[a_index].target();
        return target ? indexOf(static_cast<std::uint32_t>(target->m_value)) : NO_INSTRUCTION;
    }

    // Whether instruction a_index is a backward branch to a shared tail.
    bool entersSharedTail(int a_index) const
    {
        const TOP opcode = m_code[a_index].m_opcode;
        if (opcode != b && opcode != bc)
            return false;
        const int target = targetOf(a_index);
        if (target == NO_INSTRUCTION || target > a_index)
            return false;
        const int part = m_component[target];
        return part != m_component[a_index] && m_reaches_return[part] && !m_reaches_indirect[part];
    }

    // Whether no path falls through instruction a_index, the last line
    // before a copy, as a forward reader of the listing sees it: a return,
    // or a shared-tail branch redirected to a copy (a_kept, by tail entry)
    // that comes later.
    bool endsPath(int a_index, const std::vector<bool>& a_kept) const
    {
        const DecodedInstruction& instruction = m_code[a_index];
        const bool always = branchesAlways(instruction.branchOptions());
        if (instruction.m_opcode == bclr)
            return always;
        return (instruction.m_opcode == b || (instruction.m_opcode == bc && always)) && entersSharedTail(a_index) &&
               a_kept[targetOf(a_index)];
    }

    // Orders tail entries so that a tail that reaches another comes first.
    bool reachedFirst(int a_left, int a_right) const
    {
        if (m_component[a_left] != m_component[a_right])
            return m_component[a_left] > m_component[a_right];
        return a_left < a_right;
    }

    // The instructions of the tail entered at a_entry, in address order:
    // those reachable from it without entering another tail (whose copy
    // the branch is redirected to). Adds their number to a_total and stops
    // the run past a_limit.
    std::vector<int> tailFrom(int a_entry, std::size_t& a_total, std::size_t a_limit)
    {
        if (m_mark.empty())
            m_mark.assign(m_code.size(), NO_INSTRUCTION);
        std::vector<int> members{a_entry};
        m_mark[a_entry] = a_entry;
        for (std::size_t next = 0; next < members.size(); ++next) {
            const int member = members[next];
            const int skipped = entersSharedTail(member) ? targetOf(member) : NO_INSTRUCTION;
            for (int successor : m_successors[member]) {
                if (m_mark[successor] == a_entry || successor == skipped)
                    continue;
                m_mark[successor] = a_entry;
                members.push_back(successor);
            }
        }
        a_total += members.size();
        if (a_total > a_limit)
            stopCapacity("more than " + std::to_string(a_limit) +
                         " instructions in the copies of the shared tails of one node");
        std::sort(members.begin(), members.end());
        return members;
    }

private:
    void classify(int a_index)
    {
        const DecodedInstruction& instruction = m_code[a_index];
        const int target = targetOf(a_index);
        bool falls_through = true;
        switch (instruction.m_opcode) {
        case b:
            falls_through = false;
            if (target != NO_INSTRUCTION)
                m_successors[a_index].push_back(target);
            break;
        case bc:
            falls_through = !branchesAlways(instruction.branchOptions());
            if (target != NO_INSTRUCTION)
                m_successors[a_index].push_back(target);
            break;
        case bclr:
            m_returns[a_index] = true;
            falls_through = !branchesAlways(instruction.branchOptions());
            break;
        case op_bcctr:
            m_indirect[a_index] = true;
            falls_through = !branchesAlways(instruction.branchOptions());
            break;
        default:
            // Calls come back; every other instruction goes on.
            break;
        }
        if (falls_through && a_index + 1 < size())
            m_successors[a_index].push_back(a_index + 1);
    }

    // Tarjan's algorithm without recursion. Components are numbered in the
    // order they complete, so a component reaches only components of lower
    // or equal number; what each reaches is gathered as it completes.
    void findComponents()
    {
        const int count = size();
        m_component.assign(count, NO_INSTRUCTION);
        std::vector<int> order(count, NO_INSTRUCTION), low(count, 0);
        std::vector<int> stack;
        std::vector<bool> on_stack(count, false);
        std::vector<std::pair<int, std::size_t>> calls;
        int visited = 0;
        for (int root = 0; root < count; ++root) {
            if (order[root] != NO_INSTRUCTION)
                continue;
            calls.push_back({root, 0});
            order[root] = low[root] = visited++;
            stack.push_back(root);
            on_stack[root] = true;
            while (!calls.empty()) {
                const int node = calls.back().first;
                std::size_t& next = calls.back().second;
                if (next < m_successors[node].size()) {
                    const int successor = m_successors[node][next++];
                    if (order[successor] == NO_INSTRUCTION) {
                        order[successor] = low[successor] = visited++;
                        stack.push_back(successor);
                        on_stack[successor] = true;
                        calls.push_back({successor, 0});
                    } else if (on_stack[successor]) {
                        low[node] = std::min(low[node], order[successor]);
                    }
                    continue;
                }
                calls.pop_back();
                if (!calls.empty())
                    low[calls.back().first] = std::min(low[calls.back().first], low[node]);
                if (low[node] == order[node])
                    completeComponent(node, stack, on_stack);
            }
        }
    }

    void completeComponent(int a_root, std::vector<int>& a_stack, std::vector<bool>& a_on_stack)
    {
        const int part = static_cast<int>(m_reaches_return.size());
        std::vector<int> members;
        int member;
        do {
            member = a_stack.back();
            a_stack.pop_back();
            a_on_stack[member] = false;
            m_component[member] = part;
            members.push_back(member);
        } while (member != a_root);
        bool reaches_return = false, reaches_indirect = false;
        for (int m : members) {
            reaches_return = reaches_return || m_returns[m];
            reaches_indirect = reaches_indirect || m_indirect[m];
            for (int successor : m_successors[m]) {
                const int other = m_component[successor];
                if (other != part) {
                    reaches_return = reaches_return || m_reaches_return[other];
                    reaches_indirect = reaches_indirect || m_reaches_indirect[other];
                }
            }
        }
        m_reaches_return.push_back(reaches_return);
        m_reaches_indirect.push_back(reaches_indirect);
    }

    const std::vector<DecodedInstruction>& m_code;
    std::vector<std::vector<int>> m_successors;
    std::vector<bool> m_returns;
    std::vector<bool> m_indirect;
    std::vector<int> m_component;
    std::vector<bool> m_reaches_return;
    std::vector<bool> m_reaches_indirect;
    std::vector<int> m_mark;
};

} // namespace

std::vector<ListingLine> layOutNode(const std::vector<DecodedInstruction>& a_code, std::size_t a_copy_limit)
{
    std::vector<ListingLine> lines;
    if (a_code.empty())
        return lines;
    ControlFlow flow(a_code);
    const int count = flow.size();

    // Which node instruction each line holds.
    std::vector<int> origin;
    auto addLine = [&](int a_index) {
        ListingLine line;
        line.m_instruction = a_code[a_index];
        line.m_offset = static_cast<std::uint32_t>(4 * lines.size());
        lines.push_back(line);
        origin.push_back(a_index);
    };
    for (int i = 0; i < count; ++i) {
        addLine(i);
        const int target = flow.targetOf(i);
        if (target != NO_INSTRUCTION) {
            lines.back().m_target_in_listing = true;
            lines.back().m_target_offset = static_cast<std::uint32_t>(4 * target);
        }
    }

    std::vector<int> tails;
    for (int i = 0; i < count; ++i)
        if (flow.entersSharedTail(i))
            tails.push_back(flow.targetOf(i));
    std::sort(tails.begin(), tails.end());
    tails.erase(std::unique(tails.begin(), tails.end()), tails.end());
    std::sort(tails.begin(), tails.end(), [&](int a_left, int a_right) { return flow.reachedFirst(a_left, a_right); });

    std::size_t copied = 0;
    std::vector<std::vector<int>> members;
    for (int tail : tails)
        members.push_back(flow.tailFrom(tail, copied, a_copy_limit));

    // A copy goes after a line that no path falls through. After a tail
    // call, a call that does not come back or a loop's branch, a copy would
    // be entered by falling into it: that copy and the ones after it are
    // left out, and the branches into their tails stay as they are (which
    // may in turn leave an earlier copy without its end).
    std::vector<bool> kept(count, false);
    std::size_t placed = tails.size();
    for (bool shrinking = true; shrinking;) {
        shrinking = false;
        std::fill(kept.begin(), kept.end(), false);
        for (std::size_t i = 0; i < placed; ++i)
            kept[tails[i]] = true;
        int before = count - 1;
        for (std::size_t i = 0; i < placed; ++i) {
            if (!flow.endsPath(before, kept)) {
                placed = i;
                shrinking = true;
                break;
            }
            before = members[i].back();
        }
    }

    // The line where each tail's copy is entered.
    std::vector<std::uint32_t> copy_entry(count, 0);
    std::vector<int> line_in_copy(count, NO_INSTRUCTION);
    for (std::size_t i = 0; i < placed; ++i) {
        const int tail = tails[i];
        const std::size_t first = lines.size();
        for (int member : members[i]) {
            line_in_copy[member] = static_cast<int>(lines.size());
            addLine(member);
        }
        lines[first].m_starts_copy = true;
        lines[first].m_copy_of = static_cast<std::uint32_t>(4 * tail);
        copy_entry[tail] = lines[line_in_copy[tail]].m_offset;
        for (std::size_t line = first; line < lines.size(); ++line) {
            const int target = flow.targetOf(origin[line]);
            if (target == NO_INSTRUCTION)
                continue;
            lines[line].m_target_in_listing = true;
            // A successor of a member is a member, or the entry of another
            // tail (redirected below, or left where it is); a call's target
            // stays where it is.
            const bool in_copy = std::binary_search(members[i].begin(), members[i].end(), target);
            lines[line].m_target_offset = static_cast<std::uint32_t>(in_copy ? 4 * line_in_copy[target] : 4 * target);
        }
    }

    // Copies come after every branch that enters them, so the branches
    // redirected here all go forward.
    for (std::size_t line = 0; line < lines.size(); ++line)
        if (flow.entersSharedTail(origin[line]) && kept[flow.targetOf(origin[line])])
            lines[line].m_target_offset = copy_entry[flow.targetOf(origin[line])];
    return lines;
}
