// Where transformed weights lie. Included once per instruction set.
#if defined(QUILLMERE_NETWORK_WEIGHT_PANELS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QUILLMERE_NETWORK_WEIGHT_PANELS_INL_H_
#undef QUILLMERE_NETWORK_WEIGHT_PANELS_INL_H_
#else
#define QUILLMERE_NETWORK_WEIGHT_PANELS_INL_H_
#endif

#include <algorithm>
#include <cstddef>

#include "QuillmereCore/Network/CPU/Simd-inl.h"
#include "QuillmereCore/Network/CPU/TileGeometry.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::network::cpu::HWY_NAMESPACE {

// Calls body(first column, columns) for the panels of columns [begin, end); begin is that of a panel.
template <class Body>
HWY_INLINE void forEachWeightPanel(int begin, int end, Body body) {
    for (int column = begin; column < end; column += panelWidth)
        body(column, std::min(panelWidth, end - column));
}

// Where row `row`, column `column` of a matrix [rows][columns] in panels lies.
HWY_INLINE std::size_t inPanels(int rows, int columns, int row, int column) {
    const int first = column / panelWidth * panelWidth;
    const int width = std::min(panelWidth, columns - first);
    return static_cast<std::size_t>(first) * rows + static_cast<std::size_t>(row) * width + (column - first);
}

}  // namespace quillmere::network::cpu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
