#!/usr/bin/env python3
"""The kernel's information from Python, through the shell's C functions.

usage: kernel_facts.py [COMMAND]...    (of zelsh, on this machine; for example 'get /system/bootCmdLine')
"""

import ctypes
import sys

shell = ctypes.CDLL("libconfigstorectl.so.1")
if shell.ZELSH_Init() != 0:
    sys.exit("kernel_facts: the kernel speaks another version of the interface")
for command in sys.argv[1:] or ["ls /"]:
    shell.ZELSH_ParseAndExecCmd(command.encode())
