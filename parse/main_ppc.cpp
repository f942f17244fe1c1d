// The driver: the command line, the order of the run and the frame of the
// output file. Everything the proof obligation contains is printed by the
// other modules; this one owns the sections, the banners between them, the
// few literal lines and the messages of the command line.
#include "main_ppc.h"

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <string>

#include "assertion.h"
#include "basicblock.h"
#include "common.h"
#include "dwarf_debug.h"
#include "listing_source.h"
#include "machine.h"
#include "misc/stop.h"
#include "parse.h"
#include "propositionhandler.h"
#include "rawtransition.h"
#include "symbols.h"
#include "type_table.h"

namespace {

// Standard output carries many trace lines: give it its own buffer, decoupled
// from C stdio, before anything is written (this object is constructed before
// the process-wide objects below, the first of which writes a line).
struct BufferedStandardOutput {
    BufferedStandardOutput() { std::ios::sync_with_stdio(false); }
} buffered_standard_output;

} // namespace

const char* const usage_str =
    ": Usage: velcor <disasembler of concrete_system_file> -d <binary_file>\n"
    "          -u < compilation unit name> -n <node name>\n"
    "          -<output file format>: cvc | tlv | ics";

int debug_level = 0;
Machine machine;
Assertion commonAssertions;
propositionHandler* proposition_handler = new propositionHandler(PROPOSITION_CAPACITY);
dwarf_debug dwarf_debug_o;
Symbols* parse_symbol_table = nullptr;
BasicBlock** parse_basic_blocks = nullptr;
typeTable* type_table = nullptr;
symbolTable* symbol_table = nullptr;

void print_uninterpreted_function_declarations()
{
    std::ostream& out = *getOutFile();
    const std::string indent(31, ' ');
    out << "MUL:[[REAL,REAL]->REAL];\n"
        << "ANDC:[[REAL,REAL]->REAL];\n"
        << "CNTLZW:[REAL->REAL];\n"
        << "SELECT_BIT:[[REAL,REAL]->REAL];\n"
        << "BitArray:[[REAL,REAL,REAL,REAL,\n";
    for (int line = 2; line <= 7; ++line)
        out << indent << "REAL,REAL,REAL,REAL,\n";
    out << indent << "REAL,REAL,REAL,REAL]->REAL];\n"
        << "MEM:ARRAY REAL OF REAL;\n"
        << "PMEM:ARRAY REAL OF REAL;\n";
}

namespace {

// The syntax's comment character, then the text: checkers skip the line.
void markedLine(const std::string& a_text)
{
    *getOutFile() << commentChar() << a_text << '\n';
}

void banner(int a_stars, const std::string& a_text)
{
    const std::string rule(a_stars, '*');
    markedLine(rule);
    markedLine(a_text);
    markedLine(rule);
}

struct CommandLine {
    const char* listing = nullptr;
    const char* executable = nullptr;
    const char* unit = nullptr;
    const char* node = nullptr;
};

[[noreturn]] void usageStop(const std::string& a_first_line)
{
    stopRun(a_first_line + "\n" + usage_str + "\n");
}

// Walks the options after the listing. The executable is opened as soon as
// its name is read, so an error about it comes before later options.
void readOptions(int argc, char** argv, CommandLine& a_line, std::ifstream& a_executable)
{
    for (int i = 2; i < argc; ++i) {
        const char* option = argv[i];
        bool takes_value = !std::strcmp(option, "-d") || !std::strcmp(option, "-u") || !std::strcmp(option, "-n");
        if (takes_value && i + 1 >= argc)
            usageStop("Missing parameters ");
        if (!std::strcmp(option, "-noif")) {
            setSkipPrintIf();
        } else if (!std::strcmp(option, "-cvc")) {
            setOutFormat(CVC);
        } else if (!std::strcmp(option, "-tlv")) {
            setOutFormat(TLV);
        } else if (!std::strcmp(option, "-ics")) {
            setOutFormat(ICS);
        } else if (!std::strcmp(option, "-d")) {
            a_line.executable = argv[++i];
            std::cout << "executable file (dump) = " << a_line.executable << '\n';
            a_executable.close();
            a_executable.clear();
            a_executable.open(a_line.executable, std::ios::in | std::ios::binary);
            if (!a_executable.is_open())
                stopRun(std::string("Cannot open executable file ") + a_line.executable + "\n");
        } else if (!std::strcmp(option, "-u")) {
            a_line.unit = argv[++i];
            std::cout << " Unit = " << a_line.unit << '\n';
        } else if (!std::strcmp(option, "-n")) {
            a_line.node = argv[++i];
            std::cout << " Node = " << a_line.node << '\n';
        } else if (!std::strcmp(option, "-debug")) {
            debug_level = 1;
            std::cout << "Debug level full - printing all debug information\n";
        } else {
            usageStop(std::string("Error: Unsupported option: ") + option);
        }
    }
}

int run(int argc, char** argv)
{
    if (argc - 1 < 8)
        stopRun(std::string(argv[0]) + usage_str + "\n");

    CommandLine line;
    line.listing = argv[1];
    ListingSource listing;
    if (!listing.open(line.listing))
        stopRun(std::string("Cannot open concrete system file ") + line.listing + "\n");

    setOutFormat(CVC);
    std::ifstream executable;
    readOptions(argc, argv, line, executable);
    if (!line.executable || !line.node || !line.unit)
        usageStop("Missing parameters ");
    // Before the output file exists: a node without code to read leaves
    // nothing that could pass for an output.
    if (listing.isExecutable())
        listing.decodeNode(line.node);

    setOutFile("a_stdout");
    if (!outFileIsOpen())
        stopRun("Cannot create output file a_stdout0\n");

    parse_basic_blocks = new BasicBlock*[MAX_BASIC_BLOCKS]();
    parse_symbol_table = new Symbols(TARGET);
    machine.init(parse_symbol_table);

    banner(35, "* READING DWARF INFO...           *");
    dwarf_debug_o.readDwarf(executable, line.executable);
    dwarf_debug_o.outMembers("_C_", line.node, line.unit);
    banner(35, "* MAPPING DONE.                   *");

    banner(35, std::string("* PARSING ASSEMBLY FILE ") + line.listing);
    startScanner(listing.stream(), line.listing);
    if (yyparse() != 0 || !parse_basic_blocks[0])
        stopRun(std::string("Syntax error in ") + line.listing + " at line " + std::to_string(scannerLine()) +
                "\n");
    banner(38, "* PARSING DONE. NOW PRINTING SYMBOLS *");

    BasicBlock* block = parse_basic_blocks[0];
    std::ostream& out = *getOutFile();
    markedLine("BEGIN-COMMON-HEADER");
    print_uninterpreted_function_declarations();
    parse_symbol_table->print();
    out << "C_ : REAL;\n";
    markedLine("END-COMMON-HEADER");

    markedLine("BEGIN-ASSERTS");
    markedLine("---Target Transition ");
    banner(35, "* NOW PRINTING TRANSITION ....... *");
    dwarf_debug_o.addVars(block->getTransition());
    commonAssertions.resetMore();
    out << assertStr();
    block->print(parse_symbol_table, true);
    banner(35, "* NOW PRINTING PROPOSITIONS ..... *");
    commonAssertions.setMore();
    proposition_handler->printAll(parse_symbol_table);
    markedLine("END-ASSERTS");

    banner(35, "* NOW PRINTING UNEQUALITIES ..... *");
    markedLine("BEGIN-UNEQUALITIES");
    commonAssertions.resetMore();
    commonAssertions.printAll();
    markedLine("END-UNEQUALITIES");

    banner(35, "* NOW PRINTING MAPPING........... *");
    markedLine("BEGIN-MAPPING");
    dwarf_debug_o.print();
    dwarf_debug_o.printStructAsserts();
    if (parse_symbol_table->isIn("r3"))
        out << "ASSERT r3=C_;\n";
    markedLine("END-MAPPING");

    banner(32, "* DONE PROCESSING. CLEANING-should be done... *");
    banner(13, "* ALL DONE! *");
    out.flush();
    return 0;
}

} // namespace

int runVelcor(int argc, char** argv)
{
    int status = 0;
    try {
        status = run(argc, argv);
    } catch (const OrderlyStop& stop) {
        std::cout.flush();
        // A stream that failed (an embedding's stream may stop the run
        // itself by failing) has nothing to flush, and may throw if asked.
        if (outFileIsOpen() && getOutFile()->good())
            getOutFile()->flush();
        std::cerr << stop.message();
        std::cerr.flush();
        status = stop.status();
    }
    std::cout.flush();
    resetRunState();
    return status;
}

void resetRunState()
{
    raw_transition.clear();
    delete basic_block;
    basic_block = nullptr;
    delete[] parse_basic_blocks;
    parse_basic_blocks = nullptr;
    machine.clear();
    commonAssertions.clear();
    delete proposition_handler;
    proposition_handler = new propositionHandler(PROPOSITION_CAPACITY);
    dwarf_debug_o.clear();
    delete parse_symbol_table;
    parse_symbol_table = nullptr;
    resetScanner();
    Expression::resetFresh();
    resetCommon();
    debug_level = 0;
}
