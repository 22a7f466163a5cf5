add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  # RapidJSON's member iterators predate C++20's reversed comparisons.
  add_compile_options(-Wno-ambiguous-reversed-operator)
endif()
