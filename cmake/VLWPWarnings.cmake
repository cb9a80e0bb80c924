# Warning flags shared by every target of the project.
add_library(vl_warnings INTERFACE)
target_compile_options(vl_warnings INTERFACE -Wall -Wextra -Wpedantic)
