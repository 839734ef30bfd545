// A site in the tables.
#ifndef PAGERFWD_HOST_SITE_SITE_TABLES_H
#define PAGERFWD_HOST_SITE_SITE_TABLES_H

#include <string>
#include <string_view>
#include <vector>

#include "host/site/site.h"
#include "host/store/connection.h"
#include "host/store/writes.h"
#include "host/text/encoding.h"

namespace host {

struct TableRow {
    const char* table;
    ElementList cells;
};

// The rows of a site in which CheckSite found no error, in the encoding of its lines.
std::vector<TableRow> RowsOf(const Site& site);

// Puts the site in the place of the one before, all or nothing. Alarms and pending pages stay.
// Throws StoreError.
void StoreSite(Connection& connection, const Site& site);

// Whether an operator is asked about a page that may have left when its node died.
bool AsksForUnknownOutcomes(Connection& connection);

// The encoding that the texts in the tables have.
Encoding EncodingOf(Connection& connection);

// Whether the command of [notify] is told what became of alarms with a key.
bool TellsAnswers(Connection& connection);

// Whether who was paged for an alarm is told by a page that it is over.
bool PagesResolved(Connection& connection);

}  // namespace host

#endif
