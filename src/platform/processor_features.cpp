#include "platform/processor_features.h"

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#endif

namespace sonorelle {

std::uint32_t ProcessorFeatureWord() noexcept {
#if defined(__x86_64__) || defined(__i386__)
    unsigned eax = 0;
    unsigned ebx = 0;
    unsigned ecx = 0;
    unsigned edx = 0;
    constexpr unsigned kFeatureLeaf = 1;
    return __get_cpuid(kFeatureLeaf, &eax, &ebx, &ecx, &edx) != 0 ? edx : 0;
#else
    return 0;
#endif
}

} // namespace sonorelle
