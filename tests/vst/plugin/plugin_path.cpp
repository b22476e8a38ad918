#include "vst/plugin_library.h"

namespace sonorelle::test {

const char* PlugInPath() { return SONORELLE_PLUGIN; }

} // namespace sonorelle::test
