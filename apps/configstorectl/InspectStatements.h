#pragma once

// Every SQL text that the program runs, named for what it lists. It only reads.
namespace ConfigStoreCtl::Statements
{
/// Followed by FILTER_*, one after the other, and ORDER_BY_OBJECT.
inline constexpr const char* LIST_CONFIG =
    "SELECT Component, ConfigGroup, Name, Identifier, Version, Revision, UserValue IS NOT NULL, "
    "VitalValue IS NOT NULL, CachedValue IS NOT NULL, AutoConfValue IS NOT NULL, DesiredValue IS NOT NULL FROM Config";
inline constexpr const char* SHOW_CONFIG =
    "SELECT Component, ConfigGroup, Name, Identifier, Version, Revision, CreationTime, Success, UserValue, VitalValue, "
    "CachedValue, AutoConfValue, DesiredValue FROM Config";
inline constexpr const char* LIST_DEFAULTS =
    "SELECT Component, ConfigGroup, Name, Identifier, Version, Value IS NOT NULL, VitalValue IS NOT NULL, "
    "CachedValue IS NOT NULL FROM DefaultConfig";
inline constexpr const char* SHOW_DEFAULTS =
    "SELECT Component, ConfigGroup, Name, Identifier, Version, Value, VitalValue, CachedValue FROM DefaultConfig";
inline constexpr const char* SHOW_STAGED =
    "SELECT Component, ConfigGroup, Name, Identifier, Version, BootAction, Value, VitalValue, CachedValue "
    "FROM DesiredUserConfig";

inline constexpr const char* FILTER_COMPONENT = " WHERE Component = ?";
inline constexpr const char* FILTER_GROUP = " AND ConfigGroup = ?";
inline constexpr const char* FILTER_KEY = " AND Name = ?";
inline constexpr const char* FILTER_IDENTIFIER = " AND Identifier = ?";
inline constexpr const char* ORDER_BY_OBJECT = " ORDER BY Component, ConfigGroup, Name, Identifier";

inline constexpr const char* OBJECTS_OF_CONFIG = "SELECT DISTINCT Component, ConfigGroup, Name FROM Config";
inline constexpr const char* OBJECTS_OF_DEFAULTS = "SELECT DISTINCT Component, ConfigGroup, Name FROM DefaultConfig";
inline constexpr const char* OBJECTS_OF_SCHEMAS =
    "SELECT Component, ConfigGroup, Name FROM ConfigSchema ORDER BY Component, ConfigGroup, Name";

inline constexpr const char* COUNT_CONFIG = "SELECT COUNT(*) FROM Config";
inline constexpr const char* COUNT_DATAFILES = "SELECT COUNT(*) FROM DataFileMetadata";
inline constexpr const char* COUNT_DEFAULTS = "SELECT COUNT(*) FROM DefaultConfig";
}  // namespace ConfigStoreCtl::Statements
