#pragma once

#include "CommandTable.h"

// What the commands do. A handler writes its result into the output, and throws when it fails.
namespace ConfigStoreCtl
{
void BootLoad(const Arguments& arguments, Output& output);
void BootFacts(const Arguments& arguments, Output& output);
void BootMode(const Arguments& arguments, Output& output);
void BootNotify(const Arguments& arguments, Output& output);
void BootFinish(const Arguments& arguments, Output& output);
void BootRecordShow(const Arguments& arguments, Output& output);
void BootRecordSet(const Arguments& arguments, Output& output);
void BootRecordClear(const Arguments& arguments, Output& output);
void BootFailures(const Arguments& arguments, Output& output);

void AutoConfStart(const Arguments& arguments, Output& output);
void AutoConfEnd(const Arguments& arguments, Output& output);
void AutoConfStatus(const Arguments& arguments, Output& output);

void LiveInstall(const Arguments& arguments, Output& output);
void InstallInfo(const Arguments& arguments, Output& output);

void SchemaProcess(const Arguments& arguments, Output& output);
void SchemaRefresh(const Arguments& arguments, Output& output);
void SchemaList(const Arguments& arguments, Output& output);
void SchemaShow(const Arguments& arguments, Output& output);

void DefaultList(const Arguments& arguments, Output& output);
void DefaultShow(const Arguments& arguments, Output& output);

void ConfigList(const Arguments& arguments, Output& output);
void ConfigShow(const Arguments& arguments, Output& output);

void DesiredValidate(const Arguments& arguments, Output& output);
void DesiredSet(const Arguments& arguments, Output& output);
void DesiredSmartnic(const Arguments& arguments, Output& output);
void DesiredDelete(const Arguments& arguments, Output& output);
void DesiredPlan(const Arguments& arguments, Output& output);
void DesiredShow(const Arguments& arguments, Output& output);

void CleanupAutoConf(const Arguments& arguments, Output& output);
void CleanupStores(const Arguments& arguments, Output& output);
void CleanupFiles(const Arguments& arguments, Output& output);

void ImageList(const Arguments& arguments, Output& output);
void ImageIds(const Arguments& arguments, Output& output);
void ImageSchemaIds(const Arguments& arguments, Output& output);
void ImageDump(const Arguments& arguments, Output& output);

void FilesList(const Arguments& arguments, Output& output);
void FilesFilter(const Arguments& arguments, Output& output);
void FilesTrackBackup(const Arguments& arguments, Output& output);
void FilesTrackNonSchema(const Arguments& arguments, Output& output);

void Metrics(const Arguments& arguments, Output& output);

void StoreBackup(const Arguments& arguments, Output& output);
void StoreCheck(const Arguments& arguments, Output& output);

void RamdiskSetup(const Arguments& arguments, Output& output);

void Events(const Arguments& arguments, Output& output);

void Complete(const Arguments& arguments, Output& output);
}  // namespace ConfigStoreCtl
