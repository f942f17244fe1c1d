%{
// Grammar of the assembly listing. Every line is one instruction; its
// operands are registered in the target operand table, collected by the raw
// transition and, when the instruction is complete, translated into the one
// transition of the program. The whole listing forms a single basic block.
#include <cstring>
#include <iostream>
#include <utility>

#include "basicblock.h"
#include "listing_program.h"
#include "misc/trace.h"
#include "parse.h"
#include "rawtransition.h"
#include "symbols.h"

// The parser's two messages, in the words the listing's users know.
static const char* parserMessage(const char* a_message)
{
    if (std::strcmp(a_message, "syntax error") == 0)
        return "parse error";
    if (std::strcmp(a_message, "memory exhausted") == 0)
        return "parser stack overflow";
    return a_message;
}
#define YY_(Message) parserMessage(Message)

#define YYINITDEPTH 200
#define YYMAXDEPTH 100000

static void addConstant(long a_value)
{
    raw_transition.addOperand(*parse_symbol_table->constant(a_value));
}

static void addNamed(const char* a_name)
{
    raw_transition.addOperand(*parse_symbol_table->addTN(TN_SYM_REG, a_name));
}

// A symbolic address among the operands (a branch target).
static void addAddress(const SymbolicAddress& a_address)
{
    addConstant(a_address.offset);
    listing_program.addAddress(a_address.symbol, a_address.offset);
}

// The address of the line's instruction.
static long addLineAddress(const SymbolicAddress& a_address)
{
    raw_transition.addLineAddress(a_address.offset);
    listing_program.addAddress(a_address.symbol, a_address.offset);
    return a_address.offset;
}

static void beginInstruction(TOP a_opcode)
{
    raw_transition.addOperation(a_opcode);
    listing_program.setOpcode(a_opcode);
}

static void endInstruction()
{
    raw_transition.endOperation();
    listing_program.endLine();
}
%}

%code requires {
#include "parse.h"
}

%union {
    long num;
    TOP op;
    char* name;
    SymbolicAddress address;
}

%token <num> NUM 257
%token <num> HEXNUM 258
%token <name> SYMBOL 259
%token LT_SIGN 260
%token GT_SIGN 261
%token PLUS 262
%token <op> OPCODE 263
%token SEMICOLON 264
%token REG 265
%token RIGHTP 266
%token LEFTP 267
%token COMMA 268

%type <num> Pc_address
%type <address> Address

%start start

%%

start
    : {
          basic_block = new BasicBlock(0, 1, 0, parse_symbol_table);
          raw_transition.initRawTransition();
      }
      Lines
      {
          /* Nothing reads the raw transition again: the block takes it. */
          basic_block->takeTransition(std::move(*raw_transition.getTransition()));
          parse_basic_blocks[0] = basic_block;
      }
    ;

/* Left recursion: the stack stays flat however long the listing is. */
Lines
    : Line
    | Lines Line
    ;

Line
    : LineStart SEMICOLON Pc_address SEMICOLON Instruction
    | LineStart Pc_address SEMICOLON Instruction
    ;

/* The address column: where the instruction is, and on which line. */
LineStart
    : HEXNUM { listing_program.beginLine(scannerAddressLine(), static_cast<unsigned long>($1)); }
    ;

Instruction
    : OPCODE
      {
          /* No operands: translated with its address alone. */
          beginInstruction($1);
          endInstruction();
      }
    | OPCODE { beginInstruction($1); } Operands
    ;

/* Right recursion: the first form is reduced for the last operand, once
   every operand of the line is in. */
Operands
    : Operand { endInstruction(); }
    | Operand COMMA Operands
    ;

/* A lone name is always a named operand, never an address. */
Operand
    : SYMBOL { addNamed($1); listing_program.addName($1); }
    | NUM { addConstant($1); listing_program.addNumber($1); }
    | NUM LEFTP SYMBOL RIGHTP { addConstant($1); addNamed($3); listing_program.addDisplacement($1, $3); }
    | Address { addAddress($1); }
    ;

/* A symbolic address contributes only its offset, as a constant operand. */
Pc_address
    : Address { $$ = addLineAddress($1); }
    | SYMBOL { $$ = addLineAddress(SymbolicAddress{$1, 0}); }
    ;

Address
    : LT_SIGN SYMBOL PLUS NUM GT_SIGN { $$ = SymbolicAddress{$2, $4}; }
    | LT_SIGN SYMBOL GT_SIGN { $$ = SymbolicAddress{$2, 0}; }
    | SYMBOL PLUS NUM { $$ = SymbolicAddress{$1, $3}; }
    ;

%%

RawTransition raw_transition;
BasicBlock* basic_block = nullptr;

void yyerror(const char* a_message)
{
    misc::traceOut() << a_message << " \n";
}
