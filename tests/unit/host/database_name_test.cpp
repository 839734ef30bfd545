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

TEST(NameOfADatabase, HidesAPasswordHoweverItsKeyIsSpelt) {
    for (const char* key : {"password", "%70assword", "p%61ssw%6Frd", "sslpassw%6frd"}) {
        const std::string secret = std::string(key) + "=se%26cret";
        EXPECT_EQ("postgresql://db/site", ShownName("postgresql://db/site?" + secret)) << key;
        EXPECT_EQ("postgresql://db/site?user=a&port=1",
                  ShownName("postgresql://db/site?user=a&" + secret + "&port=1"))
            << key;
        EXPECT_TRUE(HasPassword("postgresql://db/site?" + secret)) << key;
    }
    for (const char* harmless : {"postgresql://db/site?passfile=%2fa", "postgresql://db/site?a=%",
                                 "postgresql://anna@db/%70assword?x=%7", "site.db?password=x"}) {
        EXPECT_EQ(harmless, ShownName(harmless));
        EXPECT_FALSE(HasPassword(harmless));
    }
}

TEST(NameOfADatabase, HasItsFilesBesideItOrInTheStatesFolder) {
    EXPECT_EQ("a/site.db", BesideName("a/site.db"));
    EXPECT_EQ("a/site.db", BesideOwner("a/site.db"));
    setenv("PAGERFWD_STATE", "/srv/pages", 1);
    for (const char* same : {"postgresql://anna:x@db/site", "postgres://db/site?sslmode=require",
                             "postgresql:///site?host=db&user=ben", "host=db dbname=site user=cid",
                             "dbname='site' password = x host=db"}) {
        EXPECT_EQ("/srv/pages/postgresql:db:site", BesideName(same)) << same;
    }
    EXPECT_EQ("/srv/pages/postgresql:db:5433:anna", BesideName("postgresql://anna@db:5433"));
    EXPECT_EQ("/srv/pages/postgresql:_run_pg:a_b",
              BesideName("postgresql:///a%20b?host=%2frun/pg"));
    EXPECT_EQ("/srv/pages", BesideOwner("postgresql://anna:x@db/site"));
    unsetenv("PAGERFWD_STATE");
    EXPECT_EQ("/var/lib/pagerfwd/postgresql:site", BesideName("dbname=site"));
}

TEST(NameOfADatabase, IsTheOnlyThingToldOfAServerThatCantBeReached) {
    try {
        const Connection connection("postgresql://anna:secret@/site?host=/nowhere");
        FAIL() << "there is no such server";
    } catch (const StoreError& error) {
        EXPECT_EQ(std::string::npos, std::string(error.what()).find("secret")) << error.what();
        EXPECT_EQ(0u, std::string(error.what()).find("postgresql://anna@/site?host=/nowhere: "));
    }
}

TEST(NameOfADatabase, IsNoneWhereItIsTooLong) {
    const std::string rest(200'000, 'a');
    for (const std::string& name :
         {"postgresql://anna:" + rest + "@db/site", "postgresql://db/site?" + rest + "=1",
          "host=db password='" + rest + "' dbname=site", rest}) {
        EXPECT_EQ(IsOnServer(name) ? "postgresql://..." : name, ShownName(name));
        EXPECT_FALSE(HasPassword(name));
        EXPECT_NE("", BesideName(name));
        try {
            const Connection connection(name);
            FAIL() << "there is no such database";
        } catch (const StoreError& error) {
            EXPECT_STREQ("the database's name has more than 4096 bytes", error.what());
        }
    }
}

}  // namespace
}  // namespace host
