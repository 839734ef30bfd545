// The lines of a site, as its tables have them: a line is a port that a modem hangs at.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_LINES_SITE_LINES_H
#define PAGERFWD_HOST_LINES_SITE_LINES_H

#include <optional>
#include <string>
#include <vector>

#include "host/store/connection.h"
#include "host/store/tables/pagers.h"

namespace host {

// Texts as the tables have them.
struct SiteLine {
    std::string name;
    std::string device;      // the path of its device; empty: the name means none
    bool modem = false;      // a modem hangs at it
    std::string pager_dial;  // commands that dial, by the type of a pager; empty: none
    std::string sms1_dial;
    std::string sms2_dial;
    int baud = 0;      // bit/s
    std::string init;  // the modem's commands
    std::string reset;
    std::string node;      // whose it is; empty: the first one's
    std::string settings;  // all that the tables say of it, as one text

    // type: as the tables have it.
    bool CanDialFor(const std::string& type) const;
    // Whether the pager can have its pages from it: from the line that it names, or from any that
    // can dial for its type, of the node that it names, if it names one.
    bool Fits(const PagerRow& pager) const;
};

// In the order of the site.
std::vector<SiteLine> SiteLines(Connection& connection);
// Of a node.
std::vector<SiteLine> LinesOfNode(Connection& connection, const std::string& node);
std::optional<SiteLine> FindSiteLine(Connection& connection, const std::string& name);

}  // namespace host

#endif
