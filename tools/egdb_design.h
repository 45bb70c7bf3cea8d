// Designs the byte-code catalogues from measured run statistics.
//
// The data are samples: stretches of solved Slices, a value for each symbol chosen for each. They are divided
// among the catalogues by which one codes them shortest, and each catalogue is made anew from its samples, in
// turns. A catalogue starts from the sequences of runs that its samples hold most often, far more of them
// than there is room for, and is thinned out: the samples are coded with what is there and what is used least
// goes, until one byte can number the rest. Then pairs of rows that follow each other most often are joined
// and compete again.
//
// The same samples give the same catalogues, whatever the number of threads.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "egdb/catalogues.h"
#include "tools/egdb_coder.h"

struct DesignSample {
    ValuePlanes planes;
    SymbolValues values{};  // by which it is coded at present
    size_t catalogue = 0;   // likewise
    int64_t bytes = 0;      // that it takes so
};

// What a catalogue has to be besides good.
struct CatalogueRules {
    int symbols = 3;
    uint16_t longest = 0;             // the run of symbol 0 that is the longest row
    std::vector<CodeRow> fixed_rows;  // that it opens with
    bool fixed = false;               // it is these and no others
};

using Catalogue256 = std::vector<CodeRow>;

// A catalogue for the samples, coded by their `values`.
Catalogue256 design_catalogue(const std::vector<const DesignSample*>& samples, const CatalogueRules& rules);

// Catalogues by the rules, the first one for the longest runs. The samples are left with the catalogue and
// the values that suit them best. `report` is told after each turn the bytes that all samples take.
std::vector<Catalogue256> design_catalogues(std::vector<DesignSample>& samples,
                                            const std::vector<CatalogueRules>& rules, int turns, int threads,
                                            const std::function<void(int turn, int64_t bytes)>& report);
