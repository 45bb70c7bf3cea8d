// Makes the table of the byte-code catalogues: takes samples of solved endings, has catalogues designed for
// them by the rules of the format, and prints them as a source file.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tools/egdb_design.h"
#include "tools/egdb_values.h"

// What the format tells of each of the 50 catalogues. Catalogue 0 is told whole, of catalogue 1 the first
// row, of some the longest one; the longest rows of the others are laid evenly between these.
std::vector<CatalogueRules> catalogue_rules();

// Adds stretches of one solved material to the samples: one of every `stride` that catalogue 0 codes in about
// 512 bytes. `passed` counts those gone by, over all materials.
void add_design_samples(const SolvedMaterial& solved, int64_t stride, int64_t& passed,
                        std::vector<DesignSample>& samples);

// All 50. The catalogues of four symbols are designed for the same samples with the positions that are never
// looked up as a value of their own, which is as near as win/loss/draw data comes to having unknown values;
// their planes are taken away for it.
std::vector<Catalogue256> design_all_catalogues(std::vector<DesignSample>& samples, int turns, int threads,
                                                const std::function<void(int turn, int64_t bytes)>& report);

// The source text of the table.
std::string catalogue_source(const std::vector<Catalogue256>& catalogues);
