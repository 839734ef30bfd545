// Names of databases: which are on a server, and what of them is shown.
#include "host/store/database_name.h"

#include <gtest/gtest.h>

#include "host/store/connection.h"

namespace host {
namespace {

TEST(NameOfADatabase, IsAPathUnlessItNamesAServer) {
    for (const char* path : {"site.db", "/var/lib/pagerfwd/site.db", "./host=a", "hosts", "a=b", "",
                             "postgresql.db", "user"}) {
        EXPECT_FALSE(IsOnServer(path)) << path;
    }
    for (const char* name : {"postgresql://db/site", "postgres://db", "host=db dbname=site",
                             "dbname = site", "service=pager"}) {
        EXPECT_TRUE(IsOnServer(name)) << name;
    }
}

TEST(NameOfADatabase, IsShownWithoutThePassword) {
    EXPECT_EQ("a:b@c.db", ShownName("a:b@c.db"));
    EXPECT_EQ("postgresql://anna@db:5432,other/site",
              ShownName("postgresql://anna:s%20ecret@db:5432,other/site"));
    EXPECT_EQ("postgresql://anna@db/site", ShownName("postgresql://anna:se:c/r@e@db/site"));
    EXPECT_EQ("postgresql://anna@db/site?user=a@b",
              ShownName("postgresql://anna:se?cret@db/site?user=a@b"));
    EXPECT_EQ("postgresql://db:5432/site?user=anna&sslmode=require",
              ShownName("postgresql://db:5432/site?user=anna&password=secret&sslmode=require"));
    EXPECT_EQ("host=db user=anna dbname=site",
              ShownName("host=db password=secret user=anna dbname=site"));
    EXPECT_EQ("host=db dbname=site",
              ShownName("host=db password = 'it\\'s a secret' dbname=site sslpassword=too"));
}

TEST(NameOfADatabase, HasItsFilesBesideItOrInTheStatesFolder) {
    EXPECT_EQ("a/site.db", BesideName("a/site.db"));
    EXPECT_EQ("a/site.db", BesideOwner("a/site.db"));
    setenv("PAGERFWD_STATE", "/srv/pages", 1);
    EXPECT_EQ("/srv/pages/postgresql:__anna@db_site", BesideName("postgresql://anna:x@db/site"));
    EXPECT_EQ("/srv/pages", BesideOwner("postgresql://anna:x@db/site"));
    unsetenv("PAGERFWD_STATE");
    EXPECT_EQ("/var/lib/pagerfwd/dbname=site", BesideName("dbname=site"));
}

TEST(NameOfADatabase, IsTheOnlyThingToldOfAServerThatCantBeReached) {
    try {
        Connection("postgresql://anna:secret@/site?host=/nowhere");
        FAIL() << "there is no such server";
    } catch (const StoreError& error) {
        EXPECT_EQ(std::string::npos, std::string(error.what()).find("secret")) << error.what();
        EXPECT_EQ(0u, std::string(error.what()).find("postgresql://anna@/site?host=/nowhere: "));
    }
}

}  // namespace
}  // namespace host
