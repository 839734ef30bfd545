/*
 * A host as small as one can be, built with what is installed: linked with the library, its tables
 * empty. Ends with 0 when the library answers as it does for a site without pagers.
 */
#include <ctype.h>
#include <pagerfwd/pagerfwd.h>
#include <pagerfwd/table_access.h>
#include <pagerfwd/text_helpers.h>
#include <stdio.h>
#include <string.h>

enum { kOpened = 0, kNoRows = 0, kNoColumn = -1, kWritten = 0, kNoModel = -1, kNoLine = 5 };

static int opened;

int32_t DBAsciiAccessOpen(const char* database, char mode, DBAsciiHandle* handle) {
    (void)mode;
    ++opened;
    *handle = (DBAsciiHandle)database;
    return kOpened;
}
int32_t DBAsciiAccessTableOpen(DBAsciiHandle handle, const char* table) {
    return handle == NULL || table == NULL ? 1 : kOpened;
}
int32_t DBAsciiAccessClose(DBAsciiHandle handle) {
    (void)handle;
    --opened;
    return 0;
}
int32_t DBAsciiAccessCloseKeepStaticDllInfo(DBAsciiHandle handle) {
    return DBAsciiAccessClose(handle);
}
int32_t DBAsciiAccessLock(DBAsciiHandle handle, const char* table, int32_t first, int32_t second) {
    (void)handle, (void)table, (void)first, (void)second;
    return 0;
}
int32_t DBAsciiAccessUnlock(DBAsciiHandle handle, const char* table) {
    (void)handle, (void)table;
    return 0;
}
int32_t DBAsciiAccessGetAllEntriesByCondition(DBAsciiHandle handle, const char* table,
                                              const char* column, DBAsciiRowSet* rows,
                                              int32_t reserved1, const char* value, char mode,
                                              const char* selection, char flag1, char flag2,
                                              int32_t reserved2) {
    (void)handle, (void)table, (void)column, (void)rows, (void)reserved1, (void)value, (void)mode;
    (void)selection, (void)flag1, (void)flag2, (void)reserved2;
    return kNoRows;
}
int32_t DBAsciiAccessGetElementColumn(DBAsciiHandle handle, const char* table, const char* column) {
    (void)handle, (void)table, (void)column;
    return kNoColumn;
}
int32_t DBAsciiAccessFree(DBAsciiRowSet rows) {
    (void)rows;
    return 0;
}
int32_t DBAsciiAccessAddElement(DBAsciiHandle handle, const char* table, const char* column,
                                char type, const void* value, DBAsciiElementList* list) {
    (void)handle, (void)table, (void)column, (void)type, (void)value, (void)list;
    return 0;
}
int32_t DBAsciiAccessSet(DBAsciiHandle handle, const char* table, DBAsciiElementList list,
                         char flag1, char flag2, char flag3) {
    (void)handle, (void)table, (void)list, (void)flag1, (void)flag2, (void)flag3;
    return kWritten;
}
int32_t DBAsciiAccessSQLConditionSet(DBAsciiHandle handle, const char* table, const char* condition,
                                     DBAsciiElementList list, char flag, char writeNow) {
    (void)handle, (void)table, (void)condition, (void)list, (void)flag, (void)writeNow;
    return kNoRows;
}
int32_t DBAsciiAccessSQLConditionDelete(DBAsciiHandle handle, const char* table,
                                        const char* condition, char flag) {
    (void)handle, (void)table, (void)condition, (void)flag;
    return kNoRows;
}
int32_t DBAsciiAccessWrite(DBAsciiHandle handle, const char* table, int32_t* lockResult) {
    (void)handle, (void)table, (void)lockResult;
    return kNoRows;
}

char* _ltoa(long value, char* buffer, int radix) {
    snprintf(buffer, 33, radix == 16 ? "%lx" : "%ld", value);
    return buffer;
}
char* _itoa(int value, char* buffer, int radix) {
    return _ltoa(value, buffer, radix);
}
unsigned char* _mbsinc(const unsigned char* text) {
    return (unsigned char*)text + 1;
}
size_t _mbclen(const unsigned char* text) {
    return text == NULL ? 0 : 1;
}
unsigned char* _mbschr(const unsigned char* text, unsigned int character) {
    return (unsigned char*)strchr((const char*)text, (int)character);
}
unsigned char* _mbsrchr(const unsigned char* text, unsigned int character) {
    return (unsigned char*)strrchr((const char*)text, (int)character);
}
unsigned char* _mbsstr(const unsigned char* text, const unsigned char* wanted) {
    return (unsigned char*)strstr((const char*)text, (const char*)wanted);
}
int _mbscmp(const unsigned char* left, const unsigned char* right) {
    return strcmp((const char*)left, (const char*)right);
}
size_t _mbslen(const unsigned char* text) {
    return strlen((const char*)text);
}
unsigned int _mbctoupper(unsigned int character) {
    return (unsigned int)toupper((int)character);
}
int _ismbcspace(unsigned int character) {
    return isspace((int)character);
}
int _ismbcdigit(unsigned int character) {
    return isdigit((int)character);
}

int main(void) {
    char database[] = "site", name[] = "duty", number[] = "1", any[] = "", sms[] = "4";
    FwdSpecialInfoStr info = {database, NULL, NULL, NULL};
    const int32_t hours = NXIsInTimeModel(database, "office");
    const int32_t page = TestPager(&info, name, number, any, sms, any);
    printf("hours %d, page %d, left open %d\n", (int)hours, (int)page, opened);
    return hours == kNoModel && page == kNoLine && opened == 0 ? 0 : 1;
}
