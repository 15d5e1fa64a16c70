#ifndef QNLIB_LIB_PARSER_H
#define QNLIB_LIB_PARSER_H

// The command line: declared parameters and the parser with its help text.

#include "parser/parser.h"
#include "parser/parser_param.h"

#endif
