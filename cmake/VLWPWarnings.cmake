# Warning flags shared by every target of the project.
add_library(vl_warnings INTERFACE)
target_compile_options(vl_warnings INTERFACE -Wall -Wextra -Wpedantic)
# GCC 12 reports false -Wrestrict and -Wstringop-overflow warnings from inside libstdc++'s
# string and vector code at -O2 and above (GCC bugs 105329 and 105651); they name no fault
# of ours, so they are off for that compiler only.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(vl_warnings INTERFACE -Wno-restrict -Wno-stringop-overflow)
endif()
