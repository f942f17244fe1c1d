// Lays out a node's decoded code as the lines of its listing: the node's
// instructions in address order, then copies of the shared tails that
// backward branches return through.
//
// The translator follows forward branches only. Compiled code often ends
// some paths with a backward branch into an epilogue that returns (a shared
// tail): a branch whose target reaches a return without reaching the branch
// again. Each such branch is redirected to a copy of the tail placed after
// the node's end, where the forward model reaches it. A copy holds the
// instructions reachable from the tail's entry, in address order, up to the
// branches into other shared tails, which go to the copies of those tails
// (always placed later); its other branches point into it. There is one
// copy per tail entry. A copy only follows a line that no path falls
// through (a return, or a branch to a later line): after a node that ends
// otherwise (a tail call, say) no copy is placed. Backward branches that can
// reach themselves (loops), tails that reach an indirect jump (whose targets
// are unknown here) and tails left without a copy stay as they are.
#ifndef VELCOR_SRC_PPC_NODE_LAYOUT_H
#define VELCOR_SRC_PPC_NODE_LAYOUT_H

#include <cstddef>
#include <vector>

#include "listing_writer.h"
#include "ppc_decoder.h"

// Copied instructions allowed in one node, all copies together.
constexpr std::size_t MAX_COPIED_INSTRUCTIONS = 1000000;

// a_code: the node's instructions, consecutive words from its first
// address. Stops the run when the copies would hold more than a_copy_limit
// instructions.
std::vector<ListingLine> layOutNode(const std::vector<DecodedInstruction>& a_code,
                                    std::size_t a_copy_limit = MAX_COPIED_INSTRUCTIONS);

#endif
