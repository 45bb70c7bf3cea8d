// The byte codes of the older forms of databases of values, as catalogues like those of catalogues.h.
//
// The form with value lists has 30 catalogues with symbols 0 to 5, of which each Subslice names one. They are
// our own, shared by reader and writer: the first half is for three symbols, the second for six, and within
// each half runs grow faster from one to the next. The form with fixed codes has two sets, in which the
// symbols are the values themselves.
#pragma once

#include "egdb/catalogues.h"

constexpr int VALUE_LIST_CATALOGUES = 30;
constexpr int VALUE_LIST_SYMBOLS = 6;

// Numbers of codes behind those of the catalogues, for `block_code`.
constexpr int FIRST_VALUE_LIST_CODE = CATALOGUES;
constexpr int CODE_WITHOUT_PARTIALS = FIRST_VALUE_LIST_CODE + VALUE_LIST_CATALOGUES;
constexpr int CODE_WITH_PARTIALS = CODE_WITHOUT_PARTIALS + 1;
constexpr int BLOCK_CODES = CODE_WITH_PARTIALS + 1;

// By number, 0 to BLOCK_CODES - 1: the catalogues and these.
const CatalogueTable& block_code(int number);
