// The layout of a node's listing: shared tails that backward branches
// return through are copied after the node's end and the branches
// redirected to the copies; loops and tails of unknown flow stay as they
// are.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "executable_support.h"
#include "listing_writer.h"
#include "node_layout.h"
#include "ppc_decoder.h"

namespace {

constexpr std::uint32_t START = 0x10000000;

// Words of the code below, by the index of the instruction they stand at.
std::uint32_t addImmediate(int a_immediate) // addi r9,r9,IMMEDIATE
{
    return 0x39290000u | static_cast<std::uint16_t>(a_immediate);
}
const std::uint32_t STORE = 0x91230004;  // stw r9,4(r3)
const std::uint32_t RETURN = 0x4e800020; // bclr 20,0

std::uint32_t branch(int a_from, int a_to) // b
{
    return 0x48000000u | (static_cast<std::uint32_t>((a_to - a_from) * 4) & 0x03fffffc);
}

std::uint32_t branchIf(int a_options, int a_bit, int a_from, int a_to) // bc
{
    return 0x40000000u | a_options << 21 | a_bit << 16 | (static_cast<std::uint32_t>((a_to - a_from) * 4) & 0xfffc);
}

// The listing of the node "n" made of a_words.
std::string listing(const std::vector<std::uint32_t>& a_words, std::size_t a_limit = MAX_COPIED_INSTRUCTIONS)
{
    std::vector<DecodedInstruction> code;
    for (std::size_t i = 0; i < a_words.size(); ++i)
        code.push_back(decodeInstruction(a_words[i], START + 4 * static_cast<std::uint32_t>(i)));
    ListingWriter writer("n", START, nullptr);
    std::ostringstream out;
    for (const ListingLine& line : layOutNode(code, a_limit))
        writer.write(out, line);
    return out.str();
}

const char* const COPY_OF_8 = "% copy of the shared tail at <n+8>, for the backward branches that return through it\n";

} // namespace

TEST(NodeLayoutTest, ForwardCodeIsListedAsItIs)
{
    EXPECT_EQ(listing({branchIf(12, 2, 0, 2), addImmediate(1), STORE, RETURN}), "10000000: <n>: bc 12,2,<n+8>\n"
                                                                                "10000004: <n+4>: addi r9,r9,1\n"
                                                                                "10000008: <n+8>: stw r9,4(r3)\n"
                                                                                "1000000c: <n+12>: bclr 20,0\n");
    EXPECT_EQ(listing({}), "");
}

TEST(NodeLayoutTest, SharedTailIsCopiedAfterTheEnd)
{
    // The else part (16) lies after the return and goes back to the tail
    // (8) that the then part falls into.
    EXPECT_EQ(listing({branchIf(4, 1, 0, 4), addImmediate(1), STORE, RETURN, addImmediate(2), branch(5, 2)}),
              std::string("10000000: <n>: bc 4,1,<n+16>\n"
                          "10000004: <n+4>: addi r9,r9,1\n"
                          "10000008: <n+8>: stw r9,4(r3)\n"
                          "1000000c: <n+12>: bclr 20,0\n"
                          "10000010: <n+16>: addi r9,r9,2\n"
                          "10000014: <n+20>: b <n+24>\n") +
                  COPY_OF_8 +
                  "10000008: <n+24>: stw r9,4(r3)\n"
                  "1000000c: <n+28>: bclr 20,0\n");
    // Two branches into one tail share its copy; a conditional backward
    // branch is redirected too.
    EXPECT_EQ(listing({branchIf(12, 0, 0, 4), addImmediate(1), STORE, RETURN, branchIf(12, 1, 4, 2), addImmediate(2),
                       branch(6, 2)}),
              std::string("10000000: <n>: bc 12,0,<n+16>\n"
                          "10000004: <n+4>: addi r9,r9,1\n"
                          "10000008: <n+8>: stw r9,4(r3)\n"
                          "1000000c: <n+12>: bclr 20,0\n"
                          "10000010: <n+16>: bc 12,1,<n+28>\n"
                          "10000014: <n+20>: addi r9,r9,2\n"
                          "10000018: <n+24>: b <n+28>\n") +
                  COPY_OF_8 +
                  "10000008: <n+28>: stw r9,4(r3)\n"
                  "1000000c: <n+32>: bclr 20,0\n");
}

TEST(NodeLayoutTest, TailsWithinTailsGoToLaterCopies)
{
    // 20 is a tail that ends by going back to the tail at 8; 32 goes back
    // to 20. The copy of 20 comes first and goes on to the copy of 8.
    EXPECT_EQ(listing({branchIf(12, 0, 0, 4), addImmediate(1), STORE, RETURN, branchIf(12, 1, 4, 7), addImmediate(2),
                       branch(6, 2), addImmediate(3), branch(8, 5)}),
              std::string("10000000: <n>: bc 12,0,<n+16>\n"
                          "10000004: <n+4>: addi r9,r9,1\n"
                          "10000008: <n+8>: stw r9,4(r3)\n"
                          "1000000c: <n+12>: bclr 20,0\n"
                          "10000010: <n+16>: bc 12,1,<n+28>\n"
                          "10000014: <n+20>: addi r9,r9,2\n"
                          "10000018: <n+24>: b <n+44>\n"
                          "1000001c: <n+28>: addi r9,r9,3\n"
                          "10000020: <n+32>: b <n+36>\n"
                          "% copy of the shared tail at <n+20>, for the backward branches that return through it\n"
                          "10000014: <n+36>: addi r9,r9,2\n"
                          "10000018: <n+40>: b <n+44>\n") +
                  COPY_OF_8 +
                  "10000008: <n+44>: stw r9,4(r3)\n"
                  "1000000c: <n+48>: bclr 20,0\n");
}

TEST(NodeLayoutTest, BranchesThatAreNotSharedTailsStay)
{
    // A loop: the target reaches the branch again.
    const std::vector<std::uint32_t> loop = {addImmediate(1), 0x2f89000a /* cmpi 7,r9,10 */, branchIf(12, 28, 2, 0),
                                             RETURN};
    EXPECT_EQ(listing(loop), "10000000: <n>: addi r9,r9,1\n"
                             "10000004: <n+4>: cmpi 7,r9,10\n"
                             "10000008: <n+8>: bc 12,28,<n>\n"
                             "1000000c: <n+12>: bclr 20,0\n");
    // A tail that reaches an indirect jump, whose targets are unknown.
    std::string indirect = listing({branchIf(12, 2, 0, 3), 0x4c820420 /* bcctr 4,2 */, RETURN, branch(3, 1)});
    EXPECT_EQ(indirect.find("copy"), std::string::npos) << indirect;
    EXPECT_NE(indirect.find("<n+12>: b <n+4>"), std::string::npos) << indirect;
    // A tail that leaves the node without returning.
    std::string leaving = listing({branchIf(12, 2, 0, 3), addImmediate(1), branch(2, 1024), branch(3, 1)});
    EXPECT_EQ(leaving.find("copy"), std::string::npos) << leaving;
    // A branch to itself.
    EXPECT_EQ(listing({branch(0, 0), RETURN}), "10000000: <n>: b <n>\n"
                                               "10000004: <n+4>: bclr 20,0\n");
}

TEST(NodeLayoutTest, CopiesFollowOnlyLinesThatEndTheirPath)
{
    // The node ends with a tail call: a copy after it would be entered by
    // falling through, so the branch into the tail stays.
    const std::vector<std::uint32_t> tail_call = {branchIf(4, 1, 0, 4), addImmediate(1),       STORE,          RETURN,
                                                  addImmediate(2),      branchIf(12, 2, 5, 2), branch(6, 1024)};
    std::string ending_in_a_call = listing(tail_call);
    EXPECT_EQ(ending_in_a_call.find("copy"), std::string::npos) << ending_in_a_call;
    EXPECT_NE(ending_in_a_call.find("<n+20>: bc 12,2,<n+8>"), std::string::npos) << ending_in_a_call;
    // The same with a return at the end: the copy is placed.
    std::vector<std::uint32_t> returning = tail_call;
    returning.back() = RETURN;
    std::string ending_in_a_return = listing(returning);
    EXPECT_NE(ending_in_a_return.find(COPY_OF_8), std::string::npos) << ending_in_a_return;
    EXPECT_NE(ending_in_a_return.find("<n+20>: bc 12,2,<n+28>"), std::string::npos) << ending_in_a_return;
}

TEST(NodeLayoutTest, CopiesAreBounded)
{
    // Tails entered at each of m consecutive instructions that run on to
    // one return: the copies hold (m + 1) + m + ... + 2 instructions.
    const int m = 10;
    std::vector<std::uint32_t> words;
    for (int i = 0; i < m; ++i)
        words.push_back(addImmediate(i));
    words.push_back(RETURN);
    for (int i = 0; i < m; ++i)
        words.push_back(branchIf(12, 0, m + 1 + i, i));
    words.push_back(RETURN);
    const std::size_t copied = m * (m + 1) / 2 + m;
    std::string whole = listing(words, copied);
    EXPECT_NE(whole.find("<n+" + std::to_string(4 * (words.size() + copied - 1)) + ">: bclr 20,0\n"),
              std::string::npos);
    EXPECT_EQ(stopMessage([&] { listing(words, copied - 1); }),
              "Capacity exhausted: more than " + std::to_string(copied - 1) +
                  " instructions in the copies of the shared tails of one node\n");
}
