# Flags that every target shares.
#
# Results must be the same on every machine: no -ffast-math, no contraction into fused multiply-add, and the baseline
# instruction set of the architecture. -fno-math-errno and -fno-trapping-math change no value: they tell the compiler that
# nobody reads errno or the floating-point flags, so that square roots and selections vectorise.
add_library(sonorelle_flags INTERFACE)
target_compile_options(sonorelle_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wdouble-promotion
  -ffp-contract=off -fno-math-errno -fno-trapping-math
  $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>
  $<$<BOOL:${SONORELLE_WERROR}>:-Werror>)

set(CMAKE_CXX_FLAGS_RELEASE "-O3 -DNDEBUG")

if(SONORELLE_FUZZ)
  # So that the fuzzers see which ways the input takes through the libraries.
  target_compile_options(sonorelle_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()

if(SONORELLE_SANITIZE)
  # Warnings that gcc guesses from the flow of values misfire in instrumented code; the uninstrumented presets hold them.
  target_compile_options(sonorelle_flags INTERFACE
    $<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds -Wno-stringop-overflow -Wno-restrict -Wno-maybe-uninitialized>)
  target_compile_options(sonorelle_flags INTERFACE
    -fsanitize=${SONORELLE_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(sonorelle_flags INTERFACE -fsanitize=${SONORELLE_SANITIZE})
endif()
