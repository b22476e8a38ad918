#include "cli/program_runner.h"

namespace sonorelle::test {

const char* ProgramPath() { return SONORELLE_PROGRAM; }

} // namespace sonorelle::test
