// The driver: the order of the run and the frame of the output file.
// Everything the proof obligation contains is printed by the other modules;
// this one owns the sections, the banners between them and the few literal
// lines. The command line is read by its own module (command_line).
#include "main_ppc.h"

#include <cstdio>
#include <iostream>
#include <memory>
#include <string>

#include "assertion.h"
#include "basicblock.h"
#include "command_line.h"
#include "common.h"
#include "dwarf_debug.h"
#include "elf_image.h"
#include "exact_translator.h"
#include "listing_program.h"
#include "listing_source.h"
#include "machine.h"
#include "misc/descriptor_buffer.h"
#include "misc/stop.h"
#include "misc/trace.h"
#include "parse.h"
#include "propositionhandler.h"
#include "rawtransition.h"
#include "replacing_file.h"
#include "smt2_output.h"
#include "symbols.h"
#include "type_table.h"

namespace {

// Standard output carries many trace lines: give it its own large buffer,
// decoupled from C stdio, before anything is written (this object is
// constructed before the process-wide objects below, and destroyed after
// them, when it hands standard output its own buffer back).
class BufferedStandardOutput {
public:
    BufferedStandardOutput()
    {
        std::ios::sync_with_stdio(false);
        m_buffer.attach(1, false);
        m_previous = std::cout.rdbuf(&m_buffer);
    }
    ~BufferedStandardOutput()
    {
        std::cout.flush();
        std::cout.rdbuf(m_previous);
    }
    BufferedStandardOutput(const BufferedStandardOutput&) = delete;
    BufferedStandardOutput& operator=(const BufferedStandardOutput&) = delete;

private:
    misc::DescriptorBuffer m_buffer;
    std::streambuf* m_previous = nullptr;
} buffered_standard_output;

} // namespace

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

// The output file: a_stdout0 of the working directory, created at once, or
// the file of -o, which only a complete run replaces. An embedding that
// took the output for itself (setOutStream) gets no a_stdout0.
std::unique_ptr<ReplacingFile> openOutput(const CommandLine& a_line)
{
    if (a_line.m_output)
        return std::make_unique<ReplacingFile>(a_line.m_output);
    if (outStreamIsSet())
        return nullptr;
    setOutFile("a_stdout");
    if (!outFileIsOpen())
        stopRun("Cannot create output file a_stdout0\n");
    return nullptr;
}

// Sends the output to the file of -o, if there is one, while it lives.
class OutputRedirect {
public:
    explicit OutputRedirect(ReplacingFile* a_file) : m_file(a_file)
    {
        if (m_file)
            m_previous = setOutStream(&m_file->stream());
    }
    ~OutputRedirect()
    {
        if (m_file)
            setOutStream(m_previous);
    }
    OutputRedirect(const OutputRedirect&) = delete;
    OutputRedirect& operator=(const OutputRedirect&) = delete;

private:
    ReplacingFile* m_file;
    std::ostream* m_previous = nullptr;
};

// What stands between the marks of each section, in one syntax or another.
class SectionContents {
public:
    virtual ~SectionContents() = default;
    virtual void header() = 0;
    virtual void transition() = 0;
    virtual void propositions() = 0;
    virtual void unequalities() = 0;
    virtual void mapping() = 0;
};

// The four sections with their marks and banners, whatever the syntax.
void writeSections(SectionContents& a_contents)
{
    markedLine("BEGIN-COMMON-HEADER");
    a_contents.header();
    markedLine("END-COMMON-HEADER");

    markedLine("BEGIN-ASSERTS");
    markedLine("---Target Transition ");
    banner(35, "* NOW PRINTING TRANSITION ....... *");
    a_contents.transition();
    banner(35, "* NOW PRINTING PROPOSITIONS ..... *");
    a_contents.propositions();
    markedLine("END-ASSERTS");

    banner(35, "* NOW PRINTING UNEQUALITIES ..... *");
    markedLine("BEGIN-UNEQUALITIES");
    a_contents.unequalities();
    markedLine("END-UNEQUALITIES");

    banner(35, "* NOW PRINTING MAPPING........... *");
    markedLine("BEGIN-MAPPING");
    a_contents.mapping();
    markedLine("END-MAPPING");
}

// CVC, TLV and ICS: the block's transition and the tables of the run.
class ClassicContents : public SectionContents {
public:
    explicit ClassicContents(BasicBlock* a_block) : m_block(a_block) {}

    void header() override
    {
        print_uninterpreted_function_declarations();
        parse_symbol_table->print();
        *getOutFile() << "C_ : REAL;\n";
    }
    void transition() override
    {
        dwarf_debug_o.addVars(m_block->getTransition());
        commonAssertions.resetMore();
        *getOutFile() << assertStr();
        m_block->print(parse_symbol_table, true);
    }
    void propositions() override
    {
        commonAssertions.setMore();
        proposition_handler->printAll(parse_symbol_table);
    }
    void unequalities() override
    {
        commonAssertions.resetMore();
        commonAssertions.printAll();
    }
    void mapping() override
    {
        dwarf_debug_o.print();
        dwarf_debug_o.printStructAsserts();
        if (parse_symbol_table->isIn("r3"))
            *getOutFile() << "ASSERT r3=C_;\n";
    }

private:
    BasicBlock* m_block;
};

// SMT-LIB 2: the exact translation of the recorded listing.
class ExactContents : public SectionContents {
public:
    explicit ExactContents(Smt2Output& a_output) : m_output(a_output) {}

    void header() override { m_output.writeDeclarations(); }
    void transition() override { m_output.writeTransition(); }
    void propositions() override { m_output.writePropositions(); }
    void unequalities() override {}
    void mapping() override { m_output.writeMapping(); }

private:
    Smt2Output& m_output;
};

int run(int argc, char** argv)
{
    CommandLine line;
    readEarlyOptions(argc, argv, line);
    if (line.m_answer) {
        line.m_answer(std::cout);
        if (!std::cout.flush())
            stopRun("Cannot write to standard output\n");
        return 0;
    }
    misc::setQuiet(line.m_quiet);
    commonAssertions.traceCount();

    if (argc - 1 < 8)
        stopRun(std::string(argv[0]) + usage_str + "\n");

    line.m_listing = argv[1];
    ListingSource listing;
    if (!listing.open(line.m_listing))
        stopRun(std::string("Cannot open concrete system file ") + line.m_listing + "\n");

    readOptions(argc, argv, line);
    setOutFormat(line.m_format);
    if (line.m_no_if)
        setSkipPrintIf();
    if (line.m_debug)
        debug_level = 1;
    // Before the output file exists: a node without code to read leaves
    // nothing that could pass for an output.
    if (listing.isExecutable())
        listing.decodeNode(line.m_node);

    std::unique_ptr<ReplacingFile> output_file = openOutput(line);
    OutputRedirect redirect(output_file.get());
    const bool exact = getOutFormat() == SMT2;
    if (exact)
        Smt2Output::writeLogic(*getOutFile());

    parse_basic_blocks = new BasicBlock*[MAX_BASIC_BLOCKS]();
    parse_symbol_table = new Symbols(TARGET);
    // The exact translation reads the recorded listing after the parse; the
    // older one translates each line as the parser reads it.
    if (exact) {
        listing_program.setRecording(true);
        raw_transition.setTranslating(false);
    } else {
        machine.init(parse_symbol_table);
    }

    banner(35, "* READING DWARF INFO...           *");
    dwarf_debug_o.readDwarf(line.m_executable_file, line.m_executable);
    dwarf_debug_o.outMembers("_C_", line.m_node, line.m_unit);
    banner(35, "* MAPPING DONE.                   *");

    banner(35, std::string("* PARSING ASSEMBLY FILE ") + line.m_listing);
    startScanner(listing.stream(), line.m_listing);
    if (yyparse() != 0 || !parse_basic_blocks[0])
        stopRun(std::string("Syntax error in ") + line.m_listing + " at line " + std::to_string(scannerLine()) +
                "\n");
    banner(38, "* PARSING DONE. NOW PRINTING SYMBOLS *");

    if (exact) {
        // Code read from an executable loads its constants from there.
        ExactTranslator translator(listing.image(), line.m_listing, line.m_unroll);
        ExactResult result = translator.translate(listing_program.instructions());
        Smt2Output output(translator.terms(), translator.context(), result, dwarf_debug_o, *getOutFile());
        ExactContents contents(output);
        writeSections(contents);
    } else {
        ClassicContents contents(parse_basic_blocks[0]);
        writeSections(contents);
    }

    banner(32, "* DONE PROCESSING. CLEANING-should be done... *");
    banner(13, "* ALL DONE! *");
    getOutFile()->flush();
    if (output_file)
        output_file->commit();
    return 0;
}

} // namespace

int runVelcor(int argc, char** argv, AfterRun a_after)
{
    int status = 0;
    try {
        status = run(argc, argv);
    } catch (const OrderlyStop& stop) {
        std::cout.flush();
        // A stream that failed (an embedding's stream may stop the run
        // itself by failing) has nothing to flush, and may throw if asked.
        if ((outFileIsOpen() || outStreamIsSet()) && getOutFile()->good())
            getOutFile()->flush();
        std::cerr << stop.message();
        std::cerr.flush();
        status = stop.status();
    }
    std::cout.flush();
    if (a_after == AfterRun::RESET)
        resetRunState();
    return status;
}

void resetRunState()
{
    raw_transition.clear();
    listing_program.clear();
    delete basic_block;
    basic_block = nullptr;
    delete[] parse_basic_blocks;
    parse_basic_blocks = nullptr;
    machine.clear();
    commonAssertions.clear();
    proposition_handler->clear();
    dwarf_debug_o.clear();
    delete parse_symbol_table;
    parse_symbol_table = nullptr;
    resetScanner();
    Expression::resetFresh();
    resetCommon();
    debug_level = 0;
    misc::setQuiet(false);
}
