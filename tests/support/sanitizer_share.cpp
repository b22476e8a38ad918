#include "support/sanitizer_share.h"

namespace sonorelle::test {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
bool UnderSanitizer() { return true; }
#else
bool UnderSanitizer() { return false; }
#endif

} // namespace sonorelle::test
