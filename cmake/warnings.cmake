# Every target of the project links this one: its warnings, and what the presets switch on.
add_library(tkv_options INTERFACE)
target_compile_options(tkv_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
  -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wimplicit-fallthrough)

# The page's arithmetic must give the same numbers on every processor: no fused multiply-add, and
# none of the x87 unit's extended precision, which 32-bit programs would use.
target_compile_options(tkv_options INTERFACE -ffp-contract=off)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86|i.86|AMD64" AND CMAKE_SIZEOF_VOID_P EQUAL 4)
  target_compile_options(tkv_options INTERFACE -msse2 -mfpmath=sse)
endif()

# Reproducible builds: the same program in whatever folder it is built.
target_compile_options(tkv_options INTERFACE -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.)

if(TKV_SANITIZE)
  target_compile_options(tkv_options INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(tkv_options INTERFACE -fsanitize=address,undefined)
  set(TKV_SANITIZER_SOURCES ${CMAKE_CURRENT_LIST_DIR}/sanitizers.cpp)
  # The sanitizer's interceptor of dlopen honours only the program's DT_RPATH, not DT_RUNPATH.
  target_link_options(tkv_options INTERFACE -Wl,--disable-new-dtags)
endif()
if(TKV_FUZZ)
  # All code has coverage instrumentation; only the targets link the fuzzer's main.
  target_compile_options(tkv_options INTERFACE -fsanitize=fuzzer-no-link)
endif()
if(TKV_COVERAGE)
  target_compile_options(tkv_options INTERFACE --coverage)
  target_link_options(tkv_options INTERFACE --coverage)
endif()
