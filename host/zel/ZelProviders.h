#pragma once

#include <string>

#include "ZEL.h"

// The providers: each answers one node's GET (the data's bytes into @p data) or carries out its SET. Arguments have
// been checked against the node's definition; what they throw becomes a status.

ORV_ReturnStatus GetBootCmdLine(const ZEL_ParamList& instance, std::string& data);
ORV_ReturnStatus GetBootMac(const ZEL_ParamList& instance, std::string& data);
ORV_ReturnStatus GetBootOption(const ZEL_ParamList& instance, std::string& data);
ORV_ReturnStatus GetBootFileSystemUuid(const ZEL_ParamList& instance, std::string& data);

ORV_ReturnStatus SetSystemAlert(const ZEL_ParamList& instance, const ZEL_ParamList& input);

ORV_ReturnStatus GetMemUsageLimit(const ZEL_ParamList& instance, std::string& data);
ORV_ReturnStatus SetMemUsageLimit(const ZEL_ParamList& instance, const ZEL_ParamList& input);
ORV_ReturnStatus GetInodeStats(const ZEL_ParamList& instance, std::string& data);
