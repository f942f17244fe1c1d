#include "machineinfo.h"

#include <cstring>
#include <ostream>

#include "common.h"

machineInfo::machineInfo()
{
    initMachineInfo();
}

void machineInfo::initMachineInfo()
{
    m_max_register = 37;
    m_initial_LC = new ConstExp(0);
    m_initial_EC = new ConstExp(0);
    m_global_number = 0;
    m_global_number_next = 0;
    m_number_of_loaded = 0;
    m_number_of_stored = 0;
}

bb_type_t machineInfo::setBlockType(int a_flag)
{
    // The first flag found wins, so the order of the tests matters.
    static const struct {
        int flag;
        bb_type_t type;
    } kinds[] = {{0x400, SWP},         {0x40000, SWP_PROLOGUE}, {0x20000, SWP_EPILOGUE}, {0x1, ENTRY_BLOCK},
                 {0x200, LOOP_BODY},   {0x4000, LOOP_PRO_EPI},  {0x4, EXIT}};
    for (const auto& kind : kinds)
        if (a_flag & kind.flag)
            return kind.type;
    return NORMAL;
}

bool machineInfo::isPrintable(const char* a_name)
{
    return a_name && std::strncmp(a_name, "MEM", 3) == 0;
}

void machineInfo::setMaxRegister(int)
{
    // The register file of this machine is fixed.
    m_max_register = 37;
}

bool machineInfo::isRotating(const TN* a_TN)
{
    return a_TN && a_TN->isReg() && a_TN->TNRegNum() >= 32 && a_TN->TNRegNum() <= 37;
}

void machineInfo::setGlobal(const char* a_symbol_name, const char* a_register_name)
{
    if (m_global_number >= CAPACITY)
        return;
    m_global_arrays[m_global_number].symbol = a_symbol_name;
    m_global_arrays[m_global_number].register_name = a_register_name;
    ++m_global_number;
}

void machineInfo::addLoaded(const char* a_symbol_name, const char* a_global_name)
{
    if (m_number_of_loaded >= CAPACITY)
        return;
    m_loaded_array[m_number_of_loaded++] = symbol_pair_t(a_symbol_name, a_global_name);
}

void machineInfo::addStored(const char* a_symbol_name, const char* a_global_name)
{
    if (m_number_of_stored >= CAPACITY)
        return;
    m_stored_array[m_number_of_stored++] = symbol_pair_t(a_symbol_name, a_global_name);
}

void machineInfo::print() const
{
    std::ostream& out = *getOutFile();
    out << " Machine info: \n";
    out << " m_global_number = " << m_global_number << '\n';
    out << " LC = ";
    m_initial_LC->print(false, TARGET, false);
    out << " EC = ";
    m_initial_EC->print(false, TARGET, false);
    out << '\n';
}

const char* getFirstGlobal()
{
    return nullptr;
}

const char* getNextGlobal()
{
    return nullptr;
}

void mapRegisters(machineInfo* a_target, machineInfo*, char, int a_stage_number)
{
    std::ostream& out = *getOutFile();
    int stages = a_target->Sc();
    out << "% Map lc register of source \n";
    if (a_stage_number < stages - 1)
        out << "tarXlc+tarXec-" << stages << "+" << a_stage_number << "=sarXlc" << andStr() << "PtarXlc+PtarXec-"
            << stages << "+" << a_stage_number + 1 << "=PsarXlc";
    else
        out << "tarXlc+tarXec-1" << "=sarXlc" << andStr() << "PtarXlc+PtarXec-1" << "=PsarXlc";
}

namespace {

// Every source symbol against every target symbol, joined by the
// conjunction; only the symbol half of each pair takes part.
void mapSymbolPairs(const symbol_pair_t* a_target, int a_target_count, const symbol_pair_t* a_source,
                    int a_source_count, char a_prefix)
{
    std::ostream& out = *getOutFile();
    out << commentChar() << " MAPPING Source Stores to Target Stores\n";
    bool first = true;
    for (int i = 0; i < a_source_count; ++i) {
        for (int j = 0; j < a_target_count; ++j) {
            if (!first)
                out << andStr();
            first = false;
            printPair(a_source[i].first, a_target[j].first, a_prefix);
        }
    }
}

} // namespace

void mapGlobals(const machineInfo* a_target, const machineInfo* a_source, char a_prefix)
{
    std::ostream& out = *getOutFile();
    out << commentChar() << " Begin of Globals Mapping\n";
    const global_array_t* sources = a_source->globalArrays();
    const global_array_t* targets = a_target->globalArrays();
    bool first = true;
    for (int i = 0; i < a_source->globalNumber(); ++i) {
        for (int j = 0; j < a_target->globalNumber(); ++j) {
            const char* source = sources[i].symbol;
            const char* target = targets[j].symbol;
            if (!source || !target || std::strcmp(source, target) != 0)
                continue;
            if (!first)
                out << andStr();
            first = false;
            printPair(source, target, a_prefix);
        }
    }
    out << commentChar() << "End of Globals Mapping\n";
}

void mapLoaded(const machineInfo* a_target, const machineInfo* a_source, char a_prefix)
{
    mapSymbolPairs(a_target->loadedArray(), a_target->numberOfLoaded(), a_source->loadedArray(),
                   a_source->numberOfLoaded(), a_prefix);
}

void mapStored(const machineInfo* a_target, const machineInfo* a_source, char a_prefix)
{
    mapSymbolPairs(a_target->storedArray(), a_target->numberOfStored(), a_source->storedArray(),
                   a_source->numberOfStored(), a_prefix);
}
