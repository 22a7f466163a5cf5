add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
