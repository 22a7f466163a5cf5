#pragma once

#include <fcntl.h>
#include <unistd.h>

#include "TestHost.h"
#include "ZELSH.h"

/// The throwaway host on which inputs are tried. What they print goes nowhere.
inline TestHost& FuzzHost()
{
    static TestHost host;
    static const bool ready = [] {
        host.WithKernel({.bootMAC = "00:1b:21:3c:9d:f8"});
        const int nowhere = open("/dev/null", O_WRONLY);
        dup2(nowhere, STDOUT_FILENO);
        close(nowhere);
        return ZELSH_Init() == ORV_OK;
    }();
    (void)ready;
    return host;
}
