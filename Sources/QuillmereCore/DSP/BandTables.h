#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace quillmere {

// A sparse matrix by rows: the terms of row r end at ends[r], where those of the next row begin.
struct Sparse {
    struct Term {
        std::uint32_t column;
        float weight;
    };
    std::vector<Term> terms;
    std::vector<std::uint32_t> ends;

    void addRow(std::span<const Term> row) {
        terms.insert(terms.end(), row.begin(), row.end());
        ends.push_back(static_cast<std::uint32_t>(terms.size()));
    }
};

// The maps of a filter bank as BandMaps works with them. Immutable.
struct BandTables {
    Sparse forward;  // bands x bins, rows of sum 1
    Sparse inverse;  // bins x bands
    Sparse update;   // updatedBins x bands: the columns of forward, each divided by its sum
    std::vector<std::uint32_t> updatedBins;  // those that a band covers
};

}  // namespace quillmere
