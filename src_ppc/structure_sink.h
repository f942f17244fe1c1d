// Where a walk of the node's parameter structure reports what it finds.
#ifndef VELCOR_SRC_PPC_STRUCTURE_SINK_H
#define VELCOR_SRC_PPC_STRUCTURE_SINK_H

#include <cstdint>
#include <string>

// Bytes of a pointer on the target.
constexpr unsigned TARGET_POINTER_SIZE = 4;

class StructureSink {
public:
    // One cell of the structure: its source-side and target-side names and
    // the number of bytes it holds.
    virtual void insertPair(const std::string& a_source_name, const std::string& a_target_name,
                            unsigned a_byte_size) = 0;
    // The byte offset of a member, under "structure#member".
    virtual void recordMemberOffset(const char* a_struct_name, const char* a_member_name, std::int32_t a_offset) = 0;

protected:
    ~StructureSink() = default;
};

#endif
