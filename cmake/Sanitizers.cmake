option(CONFIGSTORE_SANITIZE "Build with AddressSanitizer and UndefinedBehaviorSanitizer" OFF)
if(CONFIGSTORE_SANITIZE)
  # A report needs lines, not variables; without those the build is a good deal shorter.
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer -g1)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    add_compile_options(-fsanitize-ignorelist=${PROJECT_SOURCE_DIR}/cmake/sanitize-ignore.txt)
  endif()
  add_link_options(-fsanitize=address,undefined)
endif()
