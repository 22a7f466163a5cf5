#pragma once

// Every SQL text that the library runs, named for what it does. Where a text is completed at run time (a list of
// placeholders) its beginning stands here. The schema store is attached as "ss".
namespace NimbConfigStore::Statements
{
// ---- Boot apply, mode 1 -------------------------------------------------------------------------------------------

/// Followed by "(?,?,?,?)" per excluded row, separated by commas, in one pair of parentheses. Logged as it is run.
inline constexpr const char* MARK_USER_CONFIG =
    "UPDATE Config SET UserValue = CASE WHEN UserValue IS NOT NULL AND s.PreserveNonUser = 0 THEN 'mark for deletion' "
    "ELSE NULL END, DesiredValue = NULL FROM ss.ConfigSchema AS s WHERE s.Component = Config.Component AND "
    "s.ConfigGroup = Config.ConfigGroup AND s.Name = Config.Name AND s.DSPIntegrated = 1 AND NOT "
    "(Config.Component='nimb' AND Config.ConfigGroup='authentication' AND Config.Name='user_accounts' AND "
    "Config.Identifier LIKE 'svc-qrm-%') AND (Config.Component, Config.ConfigGroup, Config.Name, Config.Identifier) "
    "NOT IN";

inline constexpr const char* INSERT_STAGED =
    "INSERT OR IGNORE INTO Config (Component, ConfigGroup, Name, Identifier, UserValue, VitalValue, CachedValue) "
    "SELECT Component, ConfigGroup, Name, Identifier, Value, VitalValue, CachedValue FROM DesiredUserConfig";

inline constexpr const char* UPDATE_FROM_STAGED =
    "UPDATE Config SET UserValue = COALESCE(du.Value, Config.UserValue), "
    "VitalValue = COALESCE(du.VitalValue, Config.VitalValue), "
    "CachedValue = COALESCE(du.CachedValue, Config.CachedValue) "
    "FROM (SELECT Component, ConfigGroup, Name, Identifier, Value, VitalValue, CachedValue FROM DesiredUserConfig) "
    "AS du WHERE du.Name = Config.Name AND du.ConfigGroup = Config.ConfigGroup AND du.Component = Config.Component "
    "AND (du.Identifier IS NULL OR du.Identifier = '' OR du.Identifier = Config.Identifier)";

inline constexpr const char* EMPTY_STAGING_AFTER_APPLY = "Delete from DesiredUserConfig";

inline constexpr const char* DELETE_MARKED = "DELETE FROM Config WHERE UserValue='mark for deletion'";

// ---- Boot apply, mode 4 -------------------------------------------------------------------------------------------

inline constexpr const char* MARK_STAGED_INSTANCES =
    "UPDATE Config SET UserValue = CASE WHEN UserValue IS NOT NULL THEN 'mark for deletion' ELSE NULL END, "
    "DesiredValue = NULL WHERE (Component, ConfigGroup, Name, Identifier) IN (SELECT Component, ConfigGroup, Name, "
    "Identifier FROM DesiredUserConfig WHERE BootAction = 'DELETE_INSTANCE')";

inline constexpr const char* MARK_STAGED_OBJECTS =
    "UPDATE Config SET UserValue = CASE WHEN UserValue IS NOT NULL THEN 'mark for deletion' ELSE NULL END, "
    "DesiredValue = NULL WHERE (Component, ConfigGroup, Name) IN (SELECT Component, ConfigGroup, Name "
    "FROM DesiredUserConfig WHERE BootAction IN ('SET','DELETE','SET_DEFAULT'))";

// A key that is "not in" a table differs for certain from each of its keys; NULL differs for certain from nothing. The
// conditions below say that with look-ups, where NOT IN would compare every row with every key.

inline constexpr const char* INSERT_SET_ROWS =
    "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, Version, UserValue, VitalValue, CachedValue) "
    "SELECT Component, ConfigGroup, Name, Identifier, Version, Value, VitalValue, CachedValue "
    "FROM DesiredUserConfig AS d WHERE BootAction = 'SET' AND "
    "NOT EXISTS (SELECT 1 FROM Config AS c WHERE c.Component = d.Component AND c.ConfigGroup = d.ConfigGroup AND "
    "c.Name = d.Name AND c.Identifier = d.Identifier) AND "
    "NOT EXISTS (SELECT 1 FROM Config AS c WHERE c.Component = d.Component AND c.ConfigGroup = d.ConfigGroup AND "
    "c.Name = d.Name AND c.Identifier IS NULL) AND (d.Identifier IS NOT NULL OR "
    "NOT EXISTS (SELECT 1 FROM Config AS c WHERE c.Component = d.Component AND c.ConfigGroup = d.ConfigGroup AND "
    "c.Name = d.Name))";

inline constexpr const char* UPDATE_SET_ROWS =
    "UPDATE Config SET UserValue = du.Value, "
    "VitalValue = CASE WHEN du.VitalValue IS NOT NULL THEN du.VitalValue ELSE Config.VitalValue END, "
    "CachedValue = CASE WHEN du.CachedValue IS NOT NULL THEN du.CachedValue ELSE Config.CachedValue END "
    "FROM (SELECT Component, ConfigGroup, Name, Identifier, Value, VitalValue, CachedValue FROM DesiredUserConfig "
    "WHERE BootAction = 'SET') AS du WHERE du.Component = Config.Component AND du.ConfigGroup = Config.ConfigGroup "
    "AND du.Name = Config.Name AND du.Identifier = Config.Identifier";

// ---- Boot apply, modes 3 and 4 ------------------------------------------------------------------------------------

inline constexpr const char* RESTORE_DEFAULTS =
    "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, Version, UserValue, Vitalvalue, Cachedvalue) "
    "SELECT Component, ConfigGroup, Name, Identifier, Version, Value, VitalValue, CachedValue FROM DefaultConfig "
    "WHERE (Component, ConfigGroup, Name) IN (SELECT Component, ConfigGroup, Name FROM DesiredUserConfig "
    "WHERE BootAction = 'SET_DEFAULT')";

// ---- Boot apply, mode 3 -------------------------------------------------------------------------------------------

inline constexpr const char* DELETE_STAGED_OBJECTS =
    "DELETE FROM Config WHERE (Component, ConfigGroup, Name) IN (SELECT Component, ConfigGroup, Name "
    "FROM DesiredUserConfig WHERE BootAction IN ('DELETE', 'SET_DEFAULT'))";

inline constexpr const char* INSERT_SMARTNIC_ROWS =
    "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, Version, UserValue) SELECT Component, ConfigGroup, "
    "Name, Identifier, Version, Value FROM DesiredUserConfig AS d WHERE BootAction = 'SET' AND ("
    "NOT EXISTS (SELECT 1 FROM ss.SmartnicSchema AS s WHERE s.Component = d.Component AND "
    "s.ConfigGroup = d.ConfigGroup AND s.Name = d.Name AND s.ValueType = 'nimb-shared') OR ("
    "NOT EXISTS (SELECT 1 FROM Config AS c WHERE c.Component = d.Component AND c.ConfigGroup = d.ConfigGroup AND "
    "c.Name = d.Name AND c.Identifier = d.Identifier) AND "
    "NOT EXISTS (SELECT 1 FROM Config AS c WHERE c.Component = d.Component AND c.ConfigGroup = d.ConfigGroup AND "
    "c.Name = d.Name AND c.Identifier IS NULL) AND (d.Identifier IS NOT NULL OR "
    "NOT EXISTS (SELECT 1 FROM Config AS c WHERE c.Component = d.Component AND c.ConfigGroup = d.ConfigGroup AND "
    "c.Name = d.Name))))";

inline constexpr const char* UPDATE_SMARTNIC_ROWS =
    "UPDATE Config SET UserValue = du.Value FROM (SELECT Component, ConfigGroup, Name, Identifier, Value "
    "FROM DesiredUserConfig WHERE BootAction = 'SET') AS du WHERE du.Component = Config.Component AND "
    "du.ConfigGroup = Config.ConfigGroup AND du.Name = Config.Name AND du.Identifier = Config.Identifier";

inline constexpr const char* DELETE_UNSTAGED_SHARED_ROWS =
    "DELETE FROM Config WHERE (Component, ConfigGroup, Name) IN (SELECT s.Component, s.ConfigGroup, s.Name "
    "FROM ss.SmartnicSchema AS s JOIN ss.ConfigSchema AS c ON c.Component = s.Component AND "
    "c.ConfigGroup = s.ConfigGroup AND c.Name = s.Name WHERE s.ValueType = 'nimb-shared' AND c.Singleton = 0) AND "
    "NOT EXISTS (SELECT 1 FROM DesiredUserConfig AS d WHERE d.BootAction = 'SET' AND "
    "d.Component = Config.Component AND d.ConfigGroup = Config.ConfigGroup AND d.Name = Config.Name AND "
    "d.Identifier = Config.Identifier) AND "
    "NOT EXISTS (SELECT 1 FROM DesiredUserConfig AS d WHERE d.BootAction = 'SET' AND "
    "d.Component = Config.Component AND d.ConfigGroup = Config.ConfigGroup AND d.Name = Config.Name AND "
    "d.Identifier IS NULL) AND (Config.Identifier IS NOT NULL OR "
    "NOT EXISTS (SELECT 1 FROM DesiredUserConfig AS d WHERE d.BootAction = 'SET' AND "
    "d.Component = Config.Component AND d.ConfigGroup = Config.ConfigGroup AND d.Name = Config.Name)) AND "
    "NOT EXISTS (SELECT 1 FROM DesiredUserConfig AS d WHERE d.BootAction = 'SET_DEFAULT' AND "
    "d.Component = Config.Component AND d.ConfigGroup = Config.ConfigGroup AND d.Name = Config.Name)";

// ---- Every boot ---------------------------------------------------------------------------------------------------

/// Only rows that change: rewriting all of them at every boot costs eleven times as much at 100,000 rows.
inline constexpr const char* FOLD_DESIRED_VALUES =
    "UPDATE Config AS c SET UserValue = CASE WHEN DesiredValue IS NULL THEN UserValue ELSE DesiredValue END, "
    "DesiredValue = NULL, Success = (SELECT NoRestore FROM ss.ConfigSchema AS s WHERE s.Name = c.Name AND "
    "s.ConfigGroup = c.ConfigGroup AND s.Component = c.Component) WHERE DesiredValue IS NOT NULL OR Success IS NOT "
    "(SELECT NoRestore FROM ss.ConfigSchema AS s WHERE s.Name = c.Name AND s.ConfigGroup = c.ConfigGroup AND "
    "s.Component = c.Component)";

// ---- Boot configuration document ----------------------------------------------------------------------------------

/// ?1 identifier, ?2 name, ?3 group, ?4 component, ?5 version, ?6 user value.
inline constexpr const char* UPSERT_USER_CONFIG =
    "INSERT OR REPLACE INTO Config ( Identifier, Name, ConfigGroup, Component, Version, CreationTime, Revision, "
    "AutoConfValue, VitalValue, CachedValue, UserValue ) VALUES ( ?1, ?2, ?3, ?4, ?5, "
    "COALESCE((SELECT CreationTime FROM Config WHERE Identifier = ?1 AND Name = ?2 AND ConfigGroup = ?3 AND "
    "Component = ?4), DATETIME(CURRENT_TIMESTAMP)), "
    "COALESCE((SELECT Revision FROM Config WHERE Identifier = ?1 AND Name = ?2 AND ConfigGroup = ?3 AND "
    "Component = ?4), 0) + 1, "
    "COALESCE((SELECT AutoConfValue FROM Config WHERE Identifier = ?1 AND Name = ?2 AND ConfigGroup = ?3 AND "
    "Component = ?4), NULL), "
    "COALESCE((SELECT VitalValue FROM Config WHERE Identifier = ?1 AND Name = ?2 AND ConfigGroup = ?3 AND "
    "Component = ?4), NULL), "
    "COALESCE((SELECT CachedValue FROM Config WHERE Identifier = ?1 AND Name = ?2 AND ConfigGroup = ?3 AND "
    "Component = ?4), NULL), ?6 )";

inline constexpr const char* DELETE_OBJECT_ROWS =
    "DELETE FROM Config WHERE Name = ? AND ConfigGroup = ? AND Component = ?;";

// ---- Staging ------------------------------------------------------------------------------------------------------

inline constexpr const char* EMPTY_STAGING = "DELETE from DesiredUserConfig";

inline constexpr const char* STAGE_INSTANCE =
    "INSERT OR REPLACE INTO DesiredUserConfig ( Identifier, Name, ConfigGroup, Component, Version, Value, BootAction ) "
    "VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7)";

inline constexpr const char* STAGE_ACTION =
    "INSERT INTO DesiredUserConfig (Component, ConfigGroup, Name, BootAction) VALUES (?, ?, ?, ?);";

inline constexpr const char* SELECT_LIVE_ORVNIC =
    "SELECT UserValue FROM Config WHERE Name = 'orvnics' AND ConfigGroup = 'network' AND Component = 'nimb' AND "
    "Identifier = ?";

// ---- Staging: what a desired document carries over ----------------------------------------------------------------

inline constexpr const char* STAGE_LIVE_NETWORK =
    "INSERT INTO DesiredUserConfig ( Identifier, Name, ConfigGroup, Component, Version, Value, BootAction) "
    "SELECT Identifier, Name, ConfigGroup, Component, Version, UserValue, 'SET' FROM Config WHERE Component = 'nimb' "
    "AND ( (ConfigGroup = 'network_gnx' AND Name = 'switches') OR (ConfigGroup = 'network' AND Name = 'orvnics'))";

inline constexpr const char* SELECT_UNSTAGED_SWITCHES =
    "SELECT Identifier, UserValue, VitalValue FROM Config WHERE Component = 'nimb' AND ConfigGroup = 'network_gnx' "
    "AND Name = 'switches' AND Identifier NOT IN ( SELECT Identifier FROM DesiredUserConfig WHERE Component = 'nimb' "
    "AND ConfigGroup = 'network_gnx' AND Name = 'switches')";

inline constexpr const char* STAGE_PRESERVED_ROW =
    "INSERT INTO DesiredUserConfig ( Identifier, Name, ConfigGroup, Component, Version, Value, VitalValue, BootAction "
    ") VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8)";

/// Followed by " AND Identifier NOT IN (?,?…)" where instances are excluded.
inline constexpr const char* STAGE_DEFAULTS =
    "INSERT INTO DesiredUserConfig ( Component, ConfigGroup, Name, Identifier, Version, Value, VitalValue, "
    "CachedValue ) SELECT Component, ConfigGroup, Name, Identifier, Version, Value, VitalValue, CachedValue "
    "FROM DefaultConfig WHERE Component = ? AND ConfigGroup = ? AND Name = ?";

inline constexpr const char* SELECT_LIVE_PERMISSIONS =
    "SELECT Identifier, UserValue, VitalValue FROM Config WHERE Component='nimb' and ConfigGroup='authorization' and "
    "Name='permissions'";

inline constexpr const char* STAGE_PERMISSION =
    "INSERT OR REPLACE INTO DesiredUserConfig ( Identifier, Name, ConfigGroup, Component, Version, Value, VitalValue, "
    "BootAction ) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8)";

inline constexpr const char* STAGE_LIVE_AGENT_OPTIONS =
    "INSERT INTO DesiredUserConfig ( Identifier, Name, ConfigGroup, Component, Version, Value, BootAction) "
    "SELECT Identifier, Name, ConfigGroup, Component, Version, UserValue, 'SET' FROM Config WHERE Component = 'nimb' "
    "AND ConfigGroup = 'advanced_options' AND Name = 'user_vars' AND Identifier in ('BRX_ScxCpuSize', "
    "'BRX_ScxMemSize', 'BRX_IP', 'BRX_Thumbprint', 'BRX_Token', 'BRX_NodeUUID', 'BRX_ValidateManagerCert', "
    "'BRX_OptionalServices')";

// ---- Staging: SmartNIC --------------------------------------------------------------------------------------------

/// Two of the words are quoted like names, which the store's connections take for texts.
inline constexpr const char* STAGE_UNMENTIONED_SHARED =
    "INSERT OR REPLACE INTO DesiredUserConfig (Component, ConfigGroup, Name, BootAction) SELECT Component, "
    "ConfigGroup, Name, CASE WHEN MutableDefaultConfig=1 THEN \"SET_DEFAULT\" ELSE 'DELETE' END FROM ss.ConfigSchema "
    "WHERE (Component, ConfigGroup, Name) IN ( SELECT Component, ConfigGroup, Name FROM ss.SmartnicSchema WHERE "
    "ss.SmartnicSchema.ValueType = \"nimb-shared\" AND (Component, ConfigGroup, Name) NOT IN ( SELECT Component, "
    "ConfigGroup, Name FROM DesiredUserConfig ) );";

// ---- Cleanup ------------------------------------------------------------------------------------------------------

inline constexpr const char* CLEAR_AUTO_CONFIG = "UPDATE Config SET AutoConfValue=NULL";

inline constexpr const char* DELETE_EMPTY_ROWS =
    "DELETE FROM Config WHERE UserValue IS NULL AND VitalValue IS NULL AND CachedValue IS NULL AND DesiredValue IS "
    "NULL";

// Look-ups where NOT IN would compare every orphan with every schema; none of the columns can be NULL.

inline constexpr const char* DELETE_ORPHANED_CONFIG =
    "DELETE FROM Config WHERE NOT EXISTS (SELECT 1 FROM ss.ConfigSchema AS s WHERE s.Component = Config.Component AND "
    "s.ConfigGroup = Config.ConfigGroup AND s.Name = Config.Name)";

inline constexpr const char* SELECT_ORPHANED_DIRS =
    "SELECT DISTINCT DirName FROM DataFileMetadata WHERE NOT EXISTS (SELECT 1 FROM ss.DataFileSchema AS s WHERE "
    "s.Component = DataFileMetadata.Component AND s.KEY = DataFileMetadata.KEY)";

inline constexpr const char* DELETE_ORPHANED_DATAFILES =
    "DELETE FROM DataFileMetadata WHERE NOT EXISTS (SELECT 1 FROM ss.DataFileSchema AS s WHERE "
    "s.Component = DataFileMetadata.Component AND s.KEY = DataFileMetadata.KEY)";

inline constexpr const char* SELECT_DATAFILES = "SELECT DirName, FileName FROM DataFileMetadata";

inline constexpr const char* DELETE_ALL_DATAFILES = "DELETE FROM DataFileMetadata";

/// Followed by "(?,?…)", one placeholder per file name.
inline constexpr const char* DELETE_MISSING_DATAFILES = "DELETE FROM DataFileMetadata WHERE DirName=? AND FileName IN ";

// ---- Default configuration ----------------------------------------------------------------------------------------

inline constexpr const char* EMPTY_DEFAULT_CONFIG = "DELETE from DefaultConfig";

inline constexpr const char* UPSERT_DEFAULT_CONFIG =
    "INSERT OR REPLACE INTO 'DefaultConfig'(Component, ConfigGroup, Name, Identifier, Value, VitalValue, CachedValue, "
    "Version) VALUES (?, ?, ?, ?, ?, ?, ?, ?);";

// ---- Reports ------------------------------------------------------------------------------------------------------

inline constexpr const char* SELECT_RESTORE_FAILURES =
    "SELECT c.Name, c.Component, c.ConfigGroup, c.Identifier FROM Config c, ss.ConfigSchema AS s WHERE "
    "c.Name = s.Name AND c.Component = s.Component AND c.ConfigGroup = s.ConfigGroup AND s.DSPIntegrated = 1 AND "
    "c.Success = 0 AND (s.SchemaType = 0 OR s.SchemaType = 2) AND c.UserValue IS NOT NULL;";

inline constexpr const char* SUM_VITAL_SIZE = "SELECT SUM(LENGTH(VitalValue)) as VitalSize FROM Config";

inline constexpr const char* SUM_USER_SIZE = "SELECT SUM(LENGTH(UserValue)) as UserSize FROM Config";

inline constexpr const char* SUM_CACHED_SIZE = "SELECT SUM(LENGTH(CachedValue)) as CachedSize FROM Config";

inline constexpr const char* COUNT_CONFIG_ROWS = "SELECT COUNT(*) as RowCount FROM Config";

inline constexpr const char* SELECT_ROW_SIZES =
    "SELECT Component, ConfigGroup, Name, LENGTH (VitalValue) VitalConfigSize, LENGTH (UserValue) UserConfigSize, "
    "LENGTH (CachedValue) CachedConfigSize FROM Config";
}  // namespace NimbConfigStore::Statements
