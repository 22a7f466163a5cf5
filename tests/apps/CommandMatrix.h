#pragma once

#include <string>
#include <vector>

/// What a call ends with: its exit status, and a part of the message, or of the output when it succeeds.
struct Outcome
{
    int status;
    std::string text;
};

/// One command with arguments that work, arguments that do not, and what comes of it in each state of the stores.
struct MatrixRow
{
    std::string command;
    std::vector<std::string> arguments;
    std::vector<std::string> badArguments;
    Outcome bad;
    Outcome works;
    Outcome missing;
    Outcome locked;
    Outcome readOnly;
    Outcome damaged;
    bool mounts = false;  ///< changes more than the files of its host: its own test runs it, in a namespace of its own
};

namespace Matrix
{
using Texts = std::vector<std::string>;

inline const std::string CONFIG = "/etc/talvor/configstore/current-store-1: ";
inline const std::string DATAFILES = "/etc/talvor/configstore/datafile-store: ";
inline const std::string SCHEMAS = "/var/lib/talvor/configstore/schema-store: ";
inline const std::string MISSING = "cannot be opened: No such file or directory";
inline const std::string LOCKED = "cannot be opened: database is locked";
inline const std::string DAMAGED = "cannot be opened: file is not a database";
inline const Outcome REFUSED_WRITE = {1, "attempt to write a readonly database"};
inline const Outcome SURPLUS = {2, "surplus"};

/// A command that reads @p store.
inline MatrixRow Reads(const std::string& store, const std::string& command, const Texts& arguments,
                       const std::string& output, const Texts& bad = {"surplus"}, const Outcome& refused = SURPLUS)
{
    return {command,     arguments,           bad, refused, {0, output}, {1, store + MISSING}, {1, store + LOCKED},
            {0, output}, {1, store + DAMAGED}};
}

/// A command that changes @p store.
inline MatrixRow Writes(const std::string& store, const std::string& command, const Texts& arguments,
                        const std::string& output, const Texts& bad = {"surplus"}, const Outcome& refused = SURPLUS)
{
    MatrixRow row = Reads(store, command, arguments, output, bad, refused);
    row.readOnly = REFUSED_WRITE;
    return row;
}

/// A command that needs no store.
inline MatrixRow NeedsNone(const std::string& command, const Texts& arguments, const std::string& output,
                           const Texts& bad = {"surplus"}, const Outcome& refused = SURPLUS)
{
    const Outcome done = {0, output};
    return {command, arguments, bad, refused, done, done, done, done, done};
}

/// A command that registers schemas: the library logs why it could not, and the message repeats that.
inline MatrixRow Registers(const std::string& command, const Texts& arguments, const Texts& bad, const Outcome& refused)
{
    MatrixRow row = Writes(SCHEMAS, command, arguments, "schema objects  3", bad, refused);
    row.missing.text = SCHEMAS + "unable to open database file";
    row.locked.text = SCHEMAS + "database is locked";
    row.damaged.text = SCHEMAS + "file is not a database";
    return row;
}

/// A command that stages for the next boot.
inline MatrixRow Stages(const std::string& command, const Texts& arguments, const std::string& output, const Texts& bad,
                        const Outcome& refused)
{
    return Writes(CONFIG, command, arguments, output, bad, refused);
}

inline MatrixRow BootLoad()
{
    const Outcome applied = {0, "result     complete"};
    const Outcome early = {0, "zub.user.cs.db.operation.error"};
    // What is missing is made, and what cannot be written is replaced; a store that another process keeps, or that is
    // damaged and has no backup, costs the step that needed it.
    return {"boot load", {}, {"--restore"}, {2, "no such option"}, applied, applied, early, applied, early};
}

inline MatrixRow DesiredPlan()
{
    MatrixRow row = Reads(CONFIG, "desired plan", {}, "the next boot applies 0 (none)");
    row.works.status = 3;
    row.readOnly = {1, "the copy of the host cannot be prepared"};  // the copy of such a file is no more writable
    return row;
}

inline MatrixRow DesiredValidate(const std::string& document, const Outcome& refused)
{
    MatrixRow row = Reads(SCHEMAS, "desired validate", {document}, "valid", {"/no/such/file"}, refused);
    row.readOnly = {1, "is not valid"};  // staged on a copy, as above
    return row;
}

inline MatrixRow CleanupAutoConf()
{
    MatrixRow row = Writes(CONFIG, "cleanup autoconf", {}, "rows removed");
    row.readOnly.text = "Error removing auto configuration value";  // all that the library logs
    return row;
}

inline MatrixRow RamdiskSetup()
{
    MatrixRow row = NeedsNone("ramdisk setup", {}, "");
    row.mounts = true;
    return row;
}

inline MatrixRow StoreCheck()
{
    return {"store check",
            {},
            {"surplus"},
            SURPLUS,
            {0, "sound"},
            {1, CONFIG + "is missing"},
            {1, CONFIG + "is locked"},
            // Made read-only by a format version that no store has.
            {1, CONFIG + "is damaged"},
            {1, CONFIG + "is damaged"}};
}

inline const std::vector<MatrixRow>& Rows()
{
    static const Outcome NO_MODE = {2, "is none of none, desired"};
    static const Outcome NO_TRUTH = {2, "neither true nor false"};
    static const Outcome NO_OBJECT = {2, "is not of the form COMPONENT/GROUP/KEY"};
    static const Outcome NO_FILTER = {2, "is not of the form COMPONENT[/GROUP[/KEY]]"};
    static const Outcome NO_PATH = {2, "is no absolute path"};
    static const Outcome NO_DOCUMENT = {1, "/no/such/file: cannot be read: No such file or directory"};
    static const std::string DOCUMENT = SOURCE_DIR "/tests/apps/documents/dns.json";
    static const Outcome NO_ID = {2, "is not of the form NAME-VERSION"};
    static const std::vector<MatrixRow> rows = {
        BootLoad(),
        Reads(CONFIG, "boot facts", {}, "boot file system"),
        Reads(CONFIG, "boot mode", {}, "boot mode  0 (none)"),
        Writes(CONFIG, "boot mode", {"hostapi"}, "boot mode  4 (hostapi)", {"5"}, NO_MODE),
        Writes(CONFIG, "boot notify", {"true"}, "notification  yes", {"yes"}, NO_TRUTH),
        Writes(CONFIG, "boot finish", {}, "live install"),
        Reads(CONFIG, "boot record", {}, "boot complete  yes"),
        Reads(CONFIG, "boot record show", {}, "boot complete  yes"),
        Writes(CONFIG, "boot record set", {"text"}, "record         text", {"a", "surplus"}),
        Writes(CONFIG, "boot record clear", {}, "boot complete  no"),
        Reads(CONFIG, "boot failures", {}, "OBJECT"),
        Writes(CONFIG, "autoconf start", {}, "automatic configuration  yes"),
        Writes(CONFIG, "autoconf end", {}, "automatic configuration  no"),
        Reads(CONFIG, "autoconf status", {}, "automatic configuration  no"),
        Writes(CONFIG, "live-install", {"true"}, "live install  yes", {"1"}, NO_TRUTH),
        Reads(CONFIG, "install-info", {}, "install info  -", {"a", "surplus"}),
        Writes(CONFIG, "install-info", {"text"}, "install info  text", {"a", "surplus"}),
        Registers("schema process", {"net-drv-1.0.0_1.0"}, {"nothing"}, NO_ID),
        Registers("schema refresh", {"--schema", "net-drv-1.0.0_1.0"}, {"--module", "m.so"}, NO_PATH),
        Reads(SCHEMAS, "schema list", {}, "nimb/network/dns"),
        Reads(SCHEMAS, "schema show", {"nimb/network/dns"}, "schema", {"nimb/network"}, NO_OBJECT),
        Reads(CONFIG, "default list", {}, "nimb/network/dns"),
        Reads(CONFIG, "default show", {"nimb/network/dns"}, "user value", {"nimb"}, NO_OBJECT),
        Reads(CONFIG, "config list", {"nimb"}, "nimb/network/dns", {"a/b/c/d"}, NO_FILTER),
        Reads(CONFIG, "config show", {"nimb/network/dns"}, "10.0.0.1", {"a//c"}, NO_OBJECT),
        DesiredValidate(DOCUMENT, NO_DOCUMENT),
        Stages("desired set", {DOCUMENT}, "applies 1 (desired)", {"/no/such/file"}, NO_DOCUMENT),
        Stages("desired smartnic", {DOCUMENT}, "applies 3 (smartnic)", {"/no/such/file"}, NO_DOCUMENT),
        Stages("desired delete", {"nimb/network/dns"}, "applies 4 (hostapi)", {"nimb/network"}, NO_OBJECT),
        DesiredPlan(),
        Reads(CONFIG, "desired show", {}, "SET_DEFAULT"),
        CleanupAutoConf(),
        Writes(CONFIG, "cleanup store", {}, "rows removed", {"--dead"}, {2, "no such option"}),
        Writes(DATAFILES, "cleanup datafiles", {}, "data-file records removed  1"),
        NeedsNone("image list", {}, "net-drv"),
        NeedsNone("image ids", {}, "net-drv"),
        NeedsNone("image schema-ids", {}, "net-drv-1.0.0_1.0"),
        NeedsNone("image dump", {}, "/tmp/image-info.csv"),
        Reads(SCHEMAS, "files list", {}, "PERSISTENCE"),
        Reads(SCHEMAS, "files filter", {"/etc/file"}, "/etc/file", {"etc/file"}, NO_PATH),
        NeedsNone("files track backup", {"/etc/file"}, "/etc/file", {}, {2, "FILE is required"}),
        NeedsNone("files track non-schema", {"/etc/file"}, "/etc/file", {""}, {2, "is no path of a file"}),
        Reads(CONFIG, "metrics", {}, "largest objects"),
        Reads(CONFIG, "store backup", {}, "backup/current-store-1"),
        StoreCheck(),
        RamdiskSetup(),
        NeedsNone("events", {}, "TIME", {"--tail"}, {2, "no such option"}),
        NeedsNone("complete", {"--", "boot", "lo"}, "load", {"--complete"}, {2, "no such option"}),
    };
    return rows;
}
}  // namespace Matrix
