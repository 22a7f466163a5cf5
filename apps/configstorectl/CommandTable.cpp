#include "CommandTable.h"

#include "BootModes.h"
#include "Commands.h"
#include "ObjectPath.h"

namespace ConfigStoreCtl
{
namespace
{
std::string CheckTruth(const std::string& text)
{
    return text == "true" || text == "false" ? "" : "'" + text + "' is neither true nor false";
}

const ArgumentRow OBJECT = {"OBJECT", ArgumentRow::ONE, "the object: COMPONENT/GROUP/KEY", CheckObject};
const ArgumentRow HOST_FILES = {"FILE", ArgumentRow::AT_LEAST_ONE, "path of a file of the host"};
}  // namespace

const std::vector<Command>& Commands()
{
    static const std::vector<Command> commands = {
        {"boot load",
         "bring the store into service: restore, process, upgrade, apply",
         BootLoad,
         {},
         {{"--no-restore", nullptr, "leave the databases as they are: no restore, nothing created"}}},
        {"boot facts", "show what the kernel and the store know about this boot", BootFacts},
        {"boot mode",
         "show, or set, what the next boot applies",
         BootMode,
         {{"MODE", ArgumentRow::OPTIONAL, "none, desired, boot-config, smartnic or hostapi, or its number",
           CheckBootMode}}},
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

        {"live-install",
         "mark, or unmark, that software was installed without a reboot",
         LiveInstall,
         {{"STATUS", ArgumentRow::ONE, "true or false", CheckTruth}}},
        {"install-info",
         "show, or set, the text kept for the installer",
         InstallInfo,
         {{"TEXT", ArgumentRow::OPTIONAL, "any text"}}},

        {"schema process",
         "register the schemas of the installed packages, rebuild default configuration",
         SchemaProcess,
         {{"ID", ArgumentRow::ANY_NUMBER, "schema identifier to accept besides those of the image"}}},
        {"schema refresh",
         "the same after a live install, then run upgrade modules",
         SchemaRefresh,
         {},
         {{"--schema", "ID", "schema identifier to accept besides those of the image"},
          {"--module", "FILE", "upgrade module to run: path of a shared object of the host"}}},
        {"schema list", "list the configuration objects that the schemas declare", SchemaList},
        {"schema show", "show one object's schema", SchemaShow, {OBJECT}},

        {"default list", "list default configuration", DefaultList},
        {"default show", "show one object's default configuration", DefaultShow, {OBJECT}},

        {"config list",
         "list the rows of the config store",
         ConfigList,
         {{"PATH", ArgumentRow::OPTIONAL, "only those below COMPONENT, COMPONENT/GROUP or COMPONENT/GROUP/KEY",
           CheckFilter}}},
        {"config show",
         "show the rows of one object, or one instance, with their values",
         ConfigShow,
         {{"OBJECT", ArgumentRow::ONE, "the object or instance: COMPONENT/GROUP/KEY[/IDENTIFIER]", CheckInstance}}},

        {"desired validate",
         "check a desired document against the schemas",
         DesiredValidate,
         {{"FILE", ArgumentRow::ONE, "the document; - is standard input"}}},
        {"desired show", "show the rows staged for the next boot", DesiredShow},

        {"cleanup autoconf", "drop the values that automatic configuration wrote", CleanupAutoConf},
        {"cleanup store",
         "remove rows that no schema describes",
         CleanupStores,
         {},
         {{"--live", nullptr, "remove the folders of removed data files too"}}},
        {"cleanup datafiles", "make the data files and their metadata agree", CleanupFiles},

        {"image list", "list the installed packages", ImageList},
        {"image schema-ids", "list the schema identifiers that the packages declare", ImageSchemaIds},
        {"image dump", "write the packages to /tmp/image-info.csv", ImageDump},

        {"files list", "list the files that the schemas declare", FilesList},
        {"files filter", "tell which files may persist", FilesFilter, {HOST_FILES}},
        {"files track backup", "replace the list of files to back up", FilesTrackBackup, {HOST_FILES}},
        {"files track non-schema",
         "replace the list of files that no schema declares",
         FilesTrackNonSchema,
         {HOST_FILES}},

        {"store backup", "back the config store and the data-file store up", StoreBackup},
        {"store check", "check the stores and their backups", StoreCheck},

        {"events",
         "show the events and alerts that the host raised",
         Events,
         {},
         {{"--follow", nullptr, "go on as more are raised, until SIGINT or SIGTERM"}}},
    };
    return commands;
}
}  // namespace ConfigStoreCtl
