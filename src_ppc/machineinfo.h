// Machine-level facts that every transition carries: the global arrays, the
// loaded and stored symbols, the initial loop and epilogue counts, the highest
// register; plus the classification of blocks by flag word and the test that
// tells memory cells apart.
#ifndef VELCOR_SRC_PPC_MACHINEINFO_H
#define VELCOR_SRC_PPC_MACHINEINFO_H

#include <utility>

#include "expression.h"

struct global_array_t {
    const char* symbol = nullptr;
    const char* register_name = nullptr;
    int initial_value = 0;
};

enum bb_type_t {
    SWP = 0,
    SWP_PROLOGUE = 1,
    SWP_EPILOGUE = 2,
    LOOP_BODY = 3,
    LOOP_PRO_EPI = 4,
    NORMAL = 5,
    LOOP = 6,
    ENTRY_BLOCK = 7,
    EXIT = 8
};

using symbol_pair_t = std::pair<const char*, const char*>;

class machineInfo {
public:
    machineInfo();

    void initMachineInfo();
    static bb_type_t setBlockType(int a_flag);
    static bool isPrintable(const char* a_name);
    int getMaxRegister() const { return m_max_register; }
    void setMaxRegister(int a_register_num);
    static bool isRotating(const TN* a_TN);

    // Each table has room for one entry; a second one is refused unchanged.
    void setGlobal(const char* a_symbol_name, const char* a_register_name);
    void addLoaded(const char* a_symbol_name, const char* a_global_name);
    void addStored(const char* a_symbol_name, const char* a_global_name);

    const char* getFirstGlobal() const { return nullptr; }
    const char* getNextGlobal() const { return nullptr; }
    int globalNumber() const { return m_global_number; }
    const global_array_t* globalArrays() const { return m_global_arrays; }
    int numberOfLoaded() const { return m_number_of_loaded; }
    int numberOfStored() const { return m_number_of_stored; }
    const symbol_pair_t* loadedArray() const { return m_loaded_array; }
    const symbol_pair_t* storedArray() const { return m_stored_array; }

    ExpHandle initialLC() const { return m_initial_LC; }
    ExpHandle initialEC() const { return m_initial_EC; }
    void setInitialLC(const ExpHandle& a_exp) { m_initial_LC = a_exp; }
    void setInitialEC(const ExpHandle& a_exp) { m_initial_EC = a_exp; }
    int Sc() const { return m_initial_EC->constValue(); }

    void print() const;

private:
    static constexpr int CAPACITY = 1;

    global_array_t m_global_arrays[CAPACITY];
    symbol_pair_t m_loaded_array[CAPACITY];
    symbol_pair_t m_stored_array[CAPACITY];
    int m_global_number = 0;
    int m_global_number_next = 0;
    int m_number_of_loaded = 0;
    int m_number_of_stored = 0;
    int m_max_register = 37;
    ExpHandle m_initial_LC;
    ExpHandle m_initial_EC;
};

const char* getFirstGlobal();
const char* getNextGlobal();

void mapRegisters(machineInfo* a_target, machineInfo* a_source, char a_prefix, int a_stage_number);
void mapGlobals(const machineInfo* a_target, const machineInfo* a_source, char a_prefix);
void mapLoaded(const machineInfo* a_target, const machineInfo* a_source, char a_prefix);
void mapStored(const machineInfo* a_target, const machineInfo* a_source, char a_prefix);

#endif
