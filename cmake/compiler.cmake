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

# sonorelle_sanitize(TARGET SANITIZERS): whoever links the interface library TARGET is compiled with these sanitizers.
function(sonorelle_sanitize target sanitizers)
  # Warnings that gcc guesses from the flow of values misfire in instrumented code; the uninstrumented presets hold them.
  target_compile_options(${target} INTERFACE
    $<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds -Wno-stringop-overflow -Wno-restrict -Wno-maybe-uninitialized>)
  target_compile_options(${target} INTERFACE
    -fsanitize=${sanitizers} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(${target} INTERFACE -fsanitize=${sanitizers})
endfunction()

if(SONORELLE_SANITIZE)
  sonorelle_sanitize(sonorelle_flags ${SONORELLE_SANITIZE})
endif()

if(SONORELLE_SANITIZED_TWINS)
  # Beside each room, the same room compiled as by the preset asan. Test code is compiled once and linked to both, so
  # that both see the same classes: those of a build that asserts and watches the order of locks.
  target_compile_options(sonorelle_flags INTERFACE -UNDEBUG)
  add_library(sonorelle_asan_flags INTERFACE)
  target_link_libraries(sonorelle_asan_flags INTERFACE sonorelle_flags)
  target_compile_definitions(sonorelle_asan_flags INTERFACE _GLIBCXX_ASSERTIONS)
  target_compile_options(sonorelle_asan_flags INTERFACE -O1 -g1)
  sonorelle_sanitize(sonorelle_asan_flags address,undefined,float-cast-overflow)
endif()
