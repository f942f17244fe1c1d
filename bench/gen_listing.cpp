// gen_listing LINES LISTING DESCRIPTION ASSEMBLY [SEED]
//
// Writes a listing of about LINES instructions shaped like the compiled step
// function of a generated dataflow node, the executable description (for
// mkdwarf) of the node's state structure that the listing works on, and the
// same instructions as assembler source (for the cross assembler with
// -mregnames), so that a disassembler can be timed on the very code.
//
// The step function is a run of blocks. Each block loads a few fields of the
// structure, computes with them, compares, branches forward to form an
// if-then or an if-then-else diamond, and stores its results back. Every
// field is written once or twice per step. The number of conditional
// branches is kept under 900: the proposition registry holds 999.
//
// The state holds pointers to parts of at most PART_FIELDS int fields each,
// so that every displacement fits the instructions' signed 16 bits however
// long the listing is; the prologue loads each part's address once into a
// register of its own (r14 upwards), as compiled code of nested state does.
// Every instruction used has an exact meaning under -smt2.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

namespace {

constexpr int MAX_BRANCHES = 880;
constexpr int BASE_ADDRESS = 0x10000000;
// Fields of one part: displacements up to 4 * 7999, below 32768.
constexpr int PART_FIELDS = 8000;
// Parts are reached through r14 .. r31.
constexpr int FIRST_PART_REGISTER = 14;
constexpr int MAX_PARTS = 32 - FIRST_PART_REGISTER;
const char* const NODE = "step";

// A small deterministic generator, so that a seed always gives one listing.
class Random {
public:
    explicit Random(std::uint64_t a_seed) : m_state(a_seed * 2654435761u + 1) {}
    int below(int a_bound)
    {
        m_state ^= m_state << 13;
        m_state ^= m_state >> 7;
        m_state ^= m_state << 17;
        return static_cast<int>(m_state % static_cast<std::uint64_t>(a_bound));
    }

private:
    std::uint64_t m_state;
};

// One instruction line; branch targets are patched once the target is known.
struct Line {
    std::string m_text;
    int m_target = -1; // index of the line a branch goes to
};

class Generator {
public:
    Generator(int a_lines, std::uint64_t a_seed) : m_budget(a_lines), m_random(a_seed) {}

    void run()
    {
        // One diamond per block, about as many blocks as branches allow.
        int blocks = m_budget / 40;
        if (blocks < 1)
            blocks = 1;
        m_block_lines = m_budget / blocks;
        if (blocks > MAX_BRANCHES)
            m_block_lines = m_budget / MAX_BRANCHES;
        // The prologue and the epilogue take 7 lines, the parts' addresses
        // one line each (a field for about every five lines).
        int body = m_budget - 7 - (m_budget / 5 / PART_FIELDS + 1);
        while (static_cast<int>(m_lines.size()) < body)
            block(body - static_cast<int>(m_lines.size()));
        std::vector<Line> code;
        code.push_back({"stwu r1,-32(r1)", -1});
        code.push_back({"mfspr r0,8", -1});
        code.push_back({"stw r0,36(r1)", -1});
        for (int part = 0; part < partsUsed(); ++part)
            code.push_back({"lwz " + reg(FIRST_PART_REGISTER + part) + "," + std::to_string(4 * part) + "(r3)", -1});
        int shift = static_cast<int>(code.size());
        for (Line& line : m_lines) {
            if (line.m_target >= 0)
                line.m_target += shift;
            code.push_back(line);
        }
        code.push_back({"lwz r0,36(r1)", -1});
        code.push_back({"mtspr 8,r0", -1});
        code.push_back({"addi r1,r1,32", -1});
        code.push_back({"bclr 20,0", -1});
        m_lines = code;
    }

    bool tooLong() const { return partsUsed() > MAX_PARTS; }

    void writeListing(std::ostream& a_out) const
    {
        a_out << "% " << NODE << ": generated dataflow step, r3 points to the node's state\n";
        for (std::size_t i = 0; i < m_lines.size(); ++i) {
            char address[16];
            std::snprintf(address, sizeof address, "%08x", BASE_ADDRESS + 4 * static_cast<int>(i));
            a_out << address << ": " << symbolic(static_cast<int>(i)) << ": " << m_lines[i].m_text;
            if (m_lines[i].m_target >= 0)
                a_out << symbolic(m_lines[i].m_target);
            a_out << '\n';
        }
    }

    // The same code for the assembler: branch targets become local labels.
    void writeAssembly(std::ostream& a_out) const
    {
        std::vector<bool> targeted(m_lines.size() + 1, false);
        for (const Line& line : m_lines)
            if (line.m_target >= 0)
                targeted[static_cast<std::size_t>(line.m_target)] = true;
        a_out << "\t.text\n\t.globl " << NODE << "\n\t.type " << NODE << ",@function\n" << NODE << ":\n";
        for (std::size_t i = 0; i < m_lines.size(); ++i) {
            if (targeted[i])
                a_out << ".L" << i << ":\n";
            a_out << '\t' << m_lines[i].m_text;
            if (m_lines[i].m_target >= 0)
                a_out << ".L" << m_lines[i].m_target;
            a_out << '\n';
        }
        if (targeted[m_lines.size()])
            a_out << ".L" << m_lines.size() << ":\n";
        a_out << "\t.size " << NODE << ",.-" << NODE << '\n';
    }

    void writeDescription(std::ostream& a_out) const
    {
        a_out << "# The state structure of the generated node: " << m_fields << " int fields in " << partsUsed()
              << " parts reached through pointers.\n"
              << "unit node.c\n"
              << "  typedef state_t struct state\n"
              << "  struct state size " << 4 * partsUsed() << '\n';
        for (int part = 0; part < partsUsed(); ++part)
            a_out << "    member part" << part << " pointer struct part" << part << " at " << 4 * part << '\n';
        a_out << "  end\n";
        for (int part = 0; part < partsUsed(); ++part) {
            int first = part * PART_FIELDS;
            int count = std::max(1, std::min(PART_FIELDS, m_fields - first));
            a_out << "  struct part" << part << " size " << 4 * count << '\n';
            for (int i = 0; i < count; ++i)
                a_out << "    member f" << first + i << " int at " << 4 * i << '\n';
            a_out << "  end\n";
        }
        a_out << "  subroutine " << NODE << '\n'
              << "    parameter self pointer state_t\n"
              << "  end\n"
              << "end\n";
    }

private:
    static std::string symbolic(int a_index)
    {
        return a_index == 0 ? std::string("<") + NODE + ">" : "<" + std::string(NODE) + "+" + std::to_string(4 * a_index) + ">";
    }

    int emit(const std::string& a_text, int a_target = -1)
    {
        m_lines.push_back({a_text, a_target});
        return static_cast<int>(m_lines.size()) - 1;
    }

    static std::string reg(int a_index) { return "r" + std::to_string(a_index); }
    int partsUsed() const { return m_fields == 0 ? 1 : (m_fields + PART_FIELDS - 1) / PART_FIELDS; }
    // Field a_field as a displacement from its part's register.
    static std::string fieldOperand(int a_field)
    {
        return std::to_string(4 * (a_field % PART_FIELDS)) + "(" + reg(FIRST_PART_REGISTER + a_field / PART_FIELDS) +
               ")";
    }
    int pickRegister() { return m_work[m_random.below(static_cast<int>(m_work.size()))]; }

    // A field to read: one not written yet in this step (an input or the
    // old value of a memory), or now and then one that the current block
    // wrote, the way local results flow into the next equation. Values never
    // flow from one block into a later one, so no expression grows with the
    // length of the listing.
    int readField()
    {
        if (!m_block_written.empty() && m_random.below(4) == 0)
            return m_block_written[static_cast<std::size_t>(m_random.below(static_cast<int>(m_block_written.size())))];
        std::size_t waiting = m_unwritten.size() - m_next_unwritten;
        if (waiting > 0 && m_random.below(2) == 0)
            return m_unwritten[m_next_unwritten + static_cast<std::size_t>(m_random.below(static_cast<int>(waiting)))];
        return newField();
    }

    int newField()
    {
        m_unwritten.push_back(m_fields);
        return m_fields++;
    }

    // A field to write: one read but not yet written, one written once
    // before now and then, else a new one. No field is written a third time.
    int writeField()
    {
        if (m_next_unwritten < m_unwritten.size()) {
            int field = m_unwritten[m_next_unwritten++];
            m_once.push_back(field);
            return field;
        }
        if (!m_once.empty() && m_random.below(3) == 0) {
            std::size_t pick = static_cast<std::size_t>(m_random.below(static_cast<int>(m_once.size())));
            int field = m_once[pick];
            m_once[pick] = m_once.back();
            m_once.pop_back();
            return field;
        }
        newField();
        return writeField();
    }

    void load(int a_register) { emit("lwz " + reg(a_register) + "," + fieldOperand(readField())); }
    void store(int a_register)
    {
        int field = writeField();
        m_block_written.push_back(field);
        emit("stw " + reg(a_register) + "," + fieldOperand(field));
    }

    // One operation on the statement's value in a_value, with a_other as the
    // second operand where the operation has one.
    void operation(int a_value, int a_other)
    {
        switch (m_random.below(6)) {
        case 0:
            emit("addi " + reg(a_value) + "," + reg(a_value) + "," + std::to_string(m_random.below(200) - 100));
            break;
        case 1:
            emit("add " + reg(a_value) + "," + reg(a_value) + "," + reg(a_other));
            break;
        case 2:
            emit("subf " + reg(a_value) + "," + reg(a_other) + "," + reg(a_value));
            break;
        case 3:
            emit("mullw " + reg(a_value) + "," + reg(a_value) + "," + reg(a_other));
            break;
        case 4:
            emit("mulli " + reg(a_value) + "," + reg(a_value) + "," + std::to_string(m_random.below(9) + 2));
            break;
        default:
            emit("addi " + reg(a_value) + "," + reg(a_other) + ",1");
            break;
        }
    }

    // One assignment of the node's equations: load one or two fields,
    // compute, store the result into a field. Returns the lines it took.
    int statement(int a_left)
    {
        int value = pickRegister();
        int other = pickRegister();
        int operations = 1 + m_random.below(3);
        int lines = 3 + operations;
        if (lines > a_left) {
            for (int i = 0; i < a_left; ++i)
                load(pickRegister());
            return a_left;
        }
        load(value);
        load(other);
        for (int i = 0; i < operations; ++i)
            operation(value, other);
        store(value);
        m_last_value = value;
        return lines;
    }

    void straight(int a_lines)
    {
        while (a_lines > 0)
            a_lines -= statement(a_lines);
    }

    void block(int a_left)
    {
        int size = m_block_lines < a_left ? m_block_lines : a_left;
        m_block_written.clear();
        if (size < 12 || m_branches >= MAX_BRANCHES) {
            straight(size);
            return;
        }
        // Lines around the diamond, then the diamond itself.
        int body = size - 6;
        int before = body / 2;
        int then_part = (body - before) / 2;
        int else_part = body - before - then_part;
        straight(before);
        // The test is on the value the block computed last.
        int tested = m_last_value;
        emit("cmpi 0," + reg(tested) + "," + std::to_string(m_random.below(50)));
        // bc 4,bit: branch when the bit is false; 12: when it is true.
        std::string condition = std::string(m_random.below(2) ? "bc 4," : "bc 12,") + std::to_string(m_random.below(3)) + ",";
        int branch = emit(condition);
        ++m_branches;
        if (m_random.below(3) == 0) {
            // if-then: the branch skips the then-part.
            straight(then_part + else_part);
            m_lines[branch].m_target = static_cast<int>(m_lines.size());
        } else {
            // if-then-else: the then-part jumps over the else-part.
            straight(then_part);
            int jump = emit("b ");
            m_lines[branch].m_target = static_cast<int>(m_lines.size());
            straight(else_part);
            m_lines[jump].m_target = static_cast<int>(m_lines.size());
        }
        store(tested);
    }

    int m_budget;
    Random m_random;
    std::vector<Line> m_lines;
    // Not r0: as the source of addi it means the number 0.
    std::vector<int> m_work{4, 5, 6, 7, 8, 9, 10, 11, 12};
    std::vector<int> m_unwritten;
    std::size_t m_next_unwritten = 0;
    std::vector<int> m_once;
    std::vector<int> m_block_written;
    int m_fields = 0;
    int m_last_value = 9;
    int m_branches = 0;
    int m_block_lines = 40;
};

} // namespace

int main(int argc, char** argv)
{
    if (argc < 5 || argc > 6) {
        std::cerr << "usage: gen_listing LINES LISTING DESCRIPTION ASSEMBLY [SEED]\n";
        return 2;
    }
    int lines = std::atoi(argv[1]);
    if (lines < 16) {
        std::cerr << "gen_listing: at least 16 lines\n";
        return 2;
    }
    std::uint64_t seed = argc == 6 ? std::strtoull(argv[5], nullptr, 10) : 1;
    Generator generator(lines, seed);
    generator.run();
    if (generator.tooLong()) {
        std::cerr << "gen_listing: more fields than " << MAX_PARTS << " parts hold\n";
        return 2;
    }
    std::ofstream listing(argv[2], std::ios::binary | std::ios::trunc);
    generator.writeListing(listing);
    std::ofstream description(argv[3], std::ios::binary | std::ios::trunc);
    generator.writeDescription(description);
    std::ofstream assembly(argv[4], std::ios::binary | std::ios::trunc);
    generator.writeAssembly(assembly);
    listing.close();
    description.close();
    assembly.close();
    if (!listing || !description || !assembly) {
        std::cerr << "gen_listing: cannot write the output files\n";
        return 1;
    }
    return 0;
}
