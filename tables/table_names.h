// The names of the tables. Their columns stand in the source of the one class that knows them.
#ifndef PAGERFWD_TABLES_TABLE_NAMES_H
#define PAGERFWD_TABLES_TABLE_NAMES_H

inline constexpr char kComPortsTable[] = "AlarmFwd_COMProperties";
inline constexpr char kPagerSettingsTable[] = "AlarmFwd_PagerSetting";
inline constexpr char kTimeModelsTable[] = "AlarmFwd_TMSetting";
inline constexpr char kPagerFwdEventsTable[] = "AlarmFwd_PagerEvents";
inline constexpr char kAlarmLogTable[] = "AlarmLog";

#endif
