#include "vst/neighbour/neighbour.h"

namespace sonorelle::test {

const char* NeighbourPath(NeighbourKind kind) {
    return kind == NeighbourKind::kHidden ? SONORELLE_HIDDEN_NEIGHBOUR : SONORELLE_PLAIN_NEIGHBOUR;
}

} // namespace sonorelle::test
