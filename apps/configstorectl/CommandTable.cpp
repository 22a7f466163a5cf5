#include "CommandTable.h"

#include "ArgumentChecks.h"
#include "ArgumentSources.h"
#include "BootModes.h"
#include "Commands.h"
#include "ObjectPath.h"

namespace ConfigStoreCtl
{
namespace
{
const ArgumentRow OBJECT = {"OBJECT", ArgumentRow::ONE, "the object: COMPONENT/GROUP/KEY", CheckObject, SchemaObjects};
const ArgumentRow DEFAULT_OBJECT = {"OBJECT", ArgumentRow::ONE, OBJECT.help, CheckObject, DefaultObjects};
const ArgumentRow STATUS = {"STATUS", ArgumentRow::ONE, "true or false", CheckTruth, Truths};
const ArgumentRow DOCUMENT = {"FILE", ArgumentRow::ONE, "the document; - is standard input"};
const ArgumentRow HOST_FILES = {"FILE", ArgumentRow::AT_LEAST_ONE, "path of a file of the host", CheckHostFile};
constexpr const char* SCHEMA_ID_HELP = "schema identifier to accept besides those of the image";
constexpr bool IS_LONG = true;
}  // namespace

const std::vector<Command>& Commands()
{
    static const std::vector<Command> commands = {
        {"boot load",
         "bring the store into service: restore, process, upgrade, apply",
         BootLoad,
         {},
         {{"--no-restore", nullptr, "leave the databases as they are: no restore, nothing created"}},
         IS_LONG},
        {"boot facts", "show what the kernel and the store know about this boot", BootFacts},
        {"boot mode",
         "show, or set, what the next boot applies",
         BootMode,
         {{"MODE", ArgumentRow::OPTIONAL, "none, desired, boot-config, smartnic or hostapi, or its number",
           CheckBootMode, BootModeNames}}},
        {"boot notify", "turn notification of changes on or off", BootNotify, {STATUS}},
        {"boot finish", "end the boot: close automatic configuration, remember the boot file system", BootFinish},
        {"boot record", "show how the boot went, as boot record show", BootRecordShow},
        {"boot record show", "show how the boot went", BootRecordShow},
        {"boot record set",
         "record how the boot went",
         BootRecordSet,
         {{"TEXT", ArgumentRow::ONE, "the record, kept as one text"}}},
        {"boot record clear", "clear the record: the boot is not complete", BootRecordClear},
        {"boot failures", "list the rows that the boot did not restore", BootFailures},

        {"autoconf start", "open the period in which automatic configuration may write", AutoConfStart},
        {"autoconf end", "close that period", AutoConfEnd},
        {"autoconf status", "tell whether it is open", AutoConfStatus},

        {"live-install", "mark, or unmark, that software was installed without a reboot", LiveInstall, {STATUS}},
        {"install-info",
         "show, or set, the text kept for the installer",
         InstallInfo,
         {{"TEXT", ArgumentRow::OPTIONAL, "any text"}}},

        {"schema process",
         "register the schemas of the installed packages, rebuild default configuration",
         SchemaProcess,
         {{"ID", ArgumentRow::ANY_NUMBER, SCHEMA_ID_HELP, CheckSchemaId}},
         {},
         IS_LONG},
        {"schema refresh",
         "the same after a live install, then run upgrade modules",
         SchemaRefresh,
         {},
         {{"--schema", "ID", SCHEMA_ID_HELP, CheckSchemaId},
          {"--module", "FILE", "upgrade module to run: path of a shared object of the host", CheckHostFile}},
         IS_LONG},
        {"schema list", "list the configuration objects that the schemas declare", SchemaList},
        {"schema show", "show one object's schema", SchemaShow, {OBJECT}},

        {"default list", "list default configuration", DefaultList},
        {"default show", "show one object's default configuration", DefaultShow, {DEFAULT_OBJECT}},

        {"config list",
         "list the rows of the config store",
         ConfigList,
         {{"PATH", ArgumentRow::OPTIONAL, "only those below COMPONENT, COMPONENT/GROUP or COMPONENT/GROUP/KEY",
           CheckFilter, StoredObjects}}},
        {"config show",
         "show the rows of one object, or one instance, with their values",
         ConfigShow,
         {{"OBJECT", ArgumentRow::ONE, "the object or instance: COMPONENT/GROUP/KEY[/IDENTIFIER]", CheckInstance,
           StoredObjects}}},

        {"desired validate", "check a desired document against the schemas", DesiredValidate, {DOCUMENT}},
        {"desired set", "stage a desired document for the next boot", DesiredSet, {DOCUMENT}},
        {"desired smartnic",
         "stage the desired configuration of a SmartNIC-hosted system",
         DesiredSmartnic,
         {DOCUMENT}},
        {"desired delete", "stage the delete of one whole object", DesiredDelete, {OBJECT}},
        {"desired plan", "tell what the next boot changes, row by row", DesiredPlan, {}, {}, IS_LONG},
        {"desired show", "show the rows staged for the next boot", DesiredShow},

        {"cleanup autoconf", "drop the values that automatic configuration wrote", CleanupAutoConf},
        {"cleanup store",
         "remove rows that no schema describes",
         CleanupStores,
         {},
         {{"--live", nullptr, "remove the folders of removed data files too"}}},
        {"cleanup datafiles", "make the data files and their metadata agree", CleanupFiles},

        {"image list", "list the installed packages", ImageList},
        {"image ids", "list the identifiers of the installed packages", ImageIds},
        {"image schema-ids", "list the schema identifiers that the packages declare", ImageSchemaIds},
        {"image dump", "write the packages to /tmp/image-info.csv", ImageDump},

        {"files list", "list the files that the schemas declare", FilesList},
        {"files filter", "tell which files may persist", FilesFilter, {HOST_FILES}},
        {"files track backup", "replace the list of files to back up", FilesTrackBackup, {HOST_FILES}},
        {"files track non-schema",
         "replace the list of files that no schema declares",
         FilesTrackNonSchema,
         {{HOST_FILES.name, HOST_FILES.count, HOST_FILES.help, CheckListedFile}}},

        {"metrics",
         "measure the config store: rows, value sizes, components, largest objects",
         Metrics,
         {},
         {{"--rows", nullptr, "the sizes of every row instead"}}},

        {"store backup", "back the config store and the data-file store up", StoreBackup, {}, {}, IS_LONG},
        {"store check", "check the stores and their backups", StoreCheck, {}, {}, IS_LONG},

        {"ramdisk setup", "mount the ramdisks of the store and of its backup", RamdiskSetup},

        {"events",
         "show the events and alerts that the host raised",
         Events,
         {},
         {{"--follow", nullptr, "go on as more are raised, until SIGINT or SIGTERM"}}},

        {"complete",
         "list what may stand next in a call, for shell completion",
         Complete,
         {{"WORD", ArgumentRow::ANY_NUMBER, "the words of the call so far behind --; the last is to be completed"}},
         {{"--describe", nullptr, "a colon and its line of help behind each word that has one"}}},
    };
    return commands;
}

const std::vector<GlobalOption>& GlobalOptions()
{
    static const std::vector<GlobalOption> options = {
        {"--root", "DIR", "work on the host whose files are below DIR instead of this machine"},
        {"--json", nullptr, "print one JSON document instead of text"},
        {"-v, --verbose", nullptr, "copy log lines to standard error"},
        {"--help", nullptr, "print help on the command, or on all, and end"},
        {"--version", nullptr, "print the version and end"},
    };
    return options;
}

std::vector<const Command*> CommandsBelow(const std::string& path)
{
    std::vector<const Command*> below;
    for (const Command& command : Commands()) {
        if (path.empty() || (std::string(command.path) + " ").starts_with(path + " ")) {
            below.push_back(&command);
        }
    }
    return below;
}
}  // namespace ConfigStoreCtl
