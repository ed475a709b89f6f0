# A release is hard to turn against its user by what the pictures and films of others hold. Which
# of these exist depends on compiler and processor.
include(CheckCXXCompilerFlag)
foreach(flag -fstack-protector-strong -fstack-clash-protection -fcf-protection
    -mbranch-protection=standard)
  string(MAKE_C_IDENTIFIER "TKV_HAS${flag}" has)
  check_cxx_compiler_flag(${flag} ${has})
  if(${has})
    target_compile_options(tkv_options INTERFACE $<$<CONFIG:Release>:${flag}>)
  endif()
endforeach()
set(fortify 2)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_GREATER_EQUAL 12)
  set(fortify 3)
endif()
target_compile_options(tkv_options INTERFACE
  $<$<CONFIG:Release>:-U_FORTIFY_SOURCE> $<$<CONFIG:Release>:-D_FORTIFY_SOURCE=${fortify}>)
include(CheckPIESupported)
check_pie_supported()
target_link_options(tkv_options INTERFACE $<$<CONFIG:Release>:LINKER:-z,relro,-z,now>)
