#include "ChildProcess.h"

#include <sys/wait.h>
#include <unistd.h>

#include <exception>

pid_t StartProcess(const std::function<bool()>& work)
{
    const pid_t process = fork();
    if (process != 0) {
        return process;
    }
    try {
        _exit(work() ? 0 : 1);
    } catch (const std::exception&) {
        _exit(1);
    }
}

bool Succeeded(pid_t process)
{
    int status = 0;
    return waitpid(process, &status, 0) == process && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}
