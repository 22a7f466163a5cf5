#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>

#include "CommandManual.h"

/// Writes the manual page: the first file with the list of commands in place of its line "@COMMANDS@", to the second.
int main(int count, char** arguments)
{
    if (count != 3) {
        std::cerr << "usage: " << arguments[0] << " TEMPLATE PAGE\n";
        return EXIT_FAILURE;
    }
    std::ifstream form(arguments[1]);
    std::ofstream page(arguments[2]);
    for (std::string line; std::getline(form, line);) {
        page << (line == "@COMMANDS@" ? ConfigStoreCtl::ManualOfCommands() : line + "\n");
    }
    page.flush();
    return form.eof() && page ? EXIT_SUCCESS : EXIT_FAILURE;
}
