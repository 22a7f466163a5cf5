#pragma once

#include <fcntl.h>
#include <unistd.h>
#include <initializer_list>

/// For the first line of main: a standard stream that was handed over closed would become the descriptor of the next
/// file or socket opened: a store, say, which the output would then overwrite. It is filled with one that can be
/// neither read nor written the right way.
inline void OccupyStandardStreams()
{
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) == -1) {
            (void)open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);  // takes the lowest free number
        }
    }
}
