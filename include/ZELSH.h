#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>

#include "ZEL.h"

#pragma GCC visibility push(default)

/// The kernel information shell: a small command interpreter over the tree of ZEL.h, and the daemon that serves it to
/// remote clients. Nothing here throws; calls answer with a status of ZEL.h or as they say. The shell is one per
/// process and belongs to one thread, but for the ZELSHPath calls on absolute paths, which any thread may make.
///
/// A path is made of components behind slashes: a node's name or, below an instance branch, an instance. "." stays,
/// ".." goes up (the root is its own parent), empty components count for nothing. Slashes and blanks inside double
/// quotes belong to the component; "\\" and "\xNN" stand for a backslash and any byte, quoted or not.
extern "C" {
struct ZELSHPath;    ///< A node of the tree with the instances that lead to it.
struct ZELSHOutput;  ///< A way to print results.

// ---- State --------------------------------------------------------------------------------------------------------

struct ZELSHOptions
{
    std::int32_t daemon;        ///< 1: output goes to the daemon's client
    std::int32_t binary;        ///< 1: in binary mode
    std::int32_t verbosity;     ///< diagnostics: below 0 none, 0 errors, 1 connections, 2 requests, 8 and 10 parsing
    std::int32_t sorted;        ///< 1: names are listed in order; 0: as the tree gives them
    const ZELSHOutput* output;  ///< one of the three below
};

/// Set up as { 0, 0, 0, 1, zelshDefaultOutputPtr }.
extern ZELSHOptions options;

extern const ZELSHOutput* const zelshDefaultOutputPtr;  ///< aligned, for people
extern const ZELSHOutput* const zelshRawOutputPtr;      ///< name=value lines: a line is a value
extern const ZELSHOutput* const zelshPythonOutputPtr;   ///< one Python literal for each command

extern const char* zelshPrompt;  ///< kept up to date by "cd"

/// What "/" stands for: the whole tree and the empty text, unless ZELSH_InitRoot chose a branch.
extern ZEL_NodeID zelshRootNodeID;
extern const char* zelshRootNodeStr;

/// Nonzero ends the shell or, in the daemon, the connection: the daemon clears it for the next one.
extern int shellTerminate;

/// Where ZELSHDaemon listens: an IPv4 address ("0.0.0.0", any) and a port (56303).
extern const char* zelshListenAddress;
extern std::uint16_t zelshListenPort;

// ---- Commands -----------------------------------------------------------------------------------------------------

/// Makes the whole tree the root and it the working directory, and checks that the kernel's definitions are the ones
/// this shell was built with: ORV_FAILURE, with a message, when they are not.
ORV_ReturnStatus ZELSH_Init();

/// Makes the branch @p text, an absolute path of the whole tree, the root and the working directory. On failure nothing
/// changes: ORV_NOT_FOUND, or ORV_BAD_PARAM for a leaf.
ORV_ReturnStatus ZELSH_InitRoot(const char* text);

/// Sets zelshPrompt to the working directory's path and "> ".
void ZELSH_SetPrompt();

/// Parses one command line and runs it. @return 0 for success, an empty line and a comment ("#..."), 1 for an unknown
/// command, 2 for a failed one or when memory ran out. Errors go through ZELSHError.
int ZELSH_ParseAndExecCmd(const char* line);

/// Runs the command arguments[0] with @p count arguments, itself included. The result is ZELSH_ParseAndExecCmd's.
int ZELSH_ExecCmd(int count, char** arguments);

/// Finds the next argument of @p text: it runs to the next white space that no double quotes enclose. Quotes and
/// escapes stay in it. @return the position behind it, with @p start and @p end of the argument; null at the end of the
/// text. Quotes that are never closed are reported, and end the argument with the text.
const char* ZELSHParseArgument(const char* text, const char** start, const char** end);

/// The candidates for the last word of @p line, the line up to the cursor: names of commands for the first word, paths
/// for the others. @p state 0 begins anew. @return one candidate at a time, each to be freed with free(), null past the
/// last. A candidate replaces the whole word; a branch's ends with a slash.
char* ZELSH_CommandGenerator(const char* line, int state);

/// The names of the instances of the instance branch @p path, as they stand in paths (quoted where needed), one behind
/// the other. @p names receives one block, pointers and texts, to be freed with free().
ORV_ReturnStatus ZELSH_GetInstanceNodes(const ZELSHPath* path, char*** names, std::size_t* count);

/// Compares two texts through pointers to them, for qsort(): by their bytes.
int ZELSH_StringCompareCb(const void* left, const void* right);

// ---- Paths --------------------------------------------------------------------------------------------------------

/// A path that is the root. Every path that these calls give is freed with ZELSHPath_Delete; on failure it is null.
ORV_ReturnStatus ZELSHPath_InitRoot(ZELSHPath** path);

/// Resolves a text path; one that does not begin with "/" goes from the working directory. Whether an instance exists
/// is not looked up, only that it is a number where instances are numbers.
/// @return ORV_NOT_FOUND when no node has that path, ORV_BAD_PARAM for a null argument or an empty text.
ORV_ReturnStatus ZELSHPath_Form(const char* text, ZELSHPath** path);

/// Goes one component on, as ZELSHPath_Form would. On failure @p path stays as it is.
ORV_ReturnStatus ZELSHPath_CatComponent(ZELSHPath* path, const char* component);

/// The path as a text that ZELSHPath_Form reads. ORV_LIMIT_EXCEEDED when it does not fit into @p size bytes.
ORV_ReturnStatus ZELSHPath_GetStr(const ZELSHPath* path, char* text, std::size_t size);

/// The leaf that @p path ends at; ORV_NOT_FOUND when it ends at a branch.
ORV_ReturnStatus ZELSHPath_GetLeafElement(const ZELSHPath* path, ZEL_NodeID* node);

/// A new list of the path's instance arguments, empty when it has none; the caller frees it with
/// ZEL_ParamListDestroy. Null on failure.
ORV_ReturnStatus ZELSHPath_GetInstArgs(const ZELSHPath* path, ZEL_ParamList** arguments);

/// Null is allowed.
void ZELSHPath_Delete(ZELSHPath* path);

// ---- Printing -----------------------------------------------------------------------------------------------------

/// Prints to standard output or, in the daemon, to the client: there at the latest when the request ends.
void ZELSHPrintf(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// Reports an error: a line on standard error or, in the daemon, ZELSHSendError. Control characters are escaped.
void ZELSHError(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// Prints @p size bytes as hexadecimal digits, or as the chosen format writes a byte string.
void ZELSHOutput_PrintBuf(const void* buffer, std::size_t size);

/// Prints a value of @p type under @p name in the chosen format. ORV_BAD_PARAM for null, or for fewer bytes than the
/// type takes.
ORV_ReturnStatus ZELSHOutput_PrintData(const char* name, const ZEL_Type* type, const void* data, std::size_t size);

/// 1 for an array that is a text: one of signed bytes; else 0.
int ZELSHIsArrayStringType(const ZEL_Type* type);

/// strtoul() with a greatest number: above @p limit the result is @p limit and errno ERANGE. A sign is no number.
unsigned long strtoul_limit(const char* text, char** end, int base, unsigned long limit);

/// 1 and the number when the whole of @p text is a number up to @p limit, else 0.
int strtoul_limit_check(const char* text, int base, unsigned long limit, unsigned long* number);

// ---- Daemon -------------------------------------------------------------------------------------------------------

/// Detaches into the background and serves the shell on TCP, one client at a time. Does not return: the calling process
/// exits with status 0 as soon as the daemon is started; the daemon exits with 0 when SIGTERM or SIGINT stops it and
/// with 1 when it cannot start. There is no authentication: whoever reaches the address may read and set everything.
void ZELSHDaemon();

/// Sends output to the client in the current mode; a piece of binary mode holds at most 65535 bytes.
/// @return the bytes of @p buffer that the connection accepted, or -1.
ssize_t ZELSHSendData(const void* buffer, std::size_t length);

/// Reports an error to the client in the current mode: the text, cut at 4095 bytes, and a new line, or a header alone.
void ZELSHSendError(const char* format, va_list arguments) __attribute__((format(printf, 1, 0)));
}

#pragma GCC visibility pop
