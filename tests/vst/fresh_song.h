// A recording that nobody has analysed yet: its analysis lasts long enough to be interrupted.
#pragma once

#include "support/temporary_folder.h"

#include <string>

namespace sonorelle::test {

// Its path.
std::string FreshSong(const TemporaryFolder& folder, double seconds);

} // namespace sonorelle::test
