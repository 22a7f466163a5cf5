add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  # RapidJSON's member iterators predate C++20's reversed comparisons.
  add_compile_options(-Wno-ambiguous-reversed-operator)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13 AND NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
  # The optimiser of GCC 12 takes std::string's own insertions for copies that may overlap.
  add_compile_options(-Wno-restrict)
endif()
