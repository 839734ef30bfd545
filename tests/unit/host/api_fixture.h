// The fixture of tests on the API: a program with a token, at a database of its own.
#ifndef PAGERFWD_TESTS_UNIT_HOST_API_FIXTURE_H
#define PAGERFWD_TESTS_UNIT_HOST_API_FIXTURE_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "host/web/api.h"
#include "host/web/token.h"
#include "tests/unit/host/service_test.h"

class ApiTest : public ServiceTest {
 protected:
    ApiTest() { token = TokenOf("maria", "manage"); }

    std::string TokenOf(const std::string& name, const std::string& may) {
        host::WriteTransaction transaction(connection);
        std::string text = host::MakeToken(connection, {name, may, 0, kNow});
        transaction.Commit();
        return text;
    }
    host::WebAnswer Ask(const std::string& method, const std::string& target,
                        const std::string& body = "") {
        return api.Answer({method, target, token, body, "127.0.0.1"});
    }
    nlohmann::json Asked(const std::string& method, const std::string& target,
                         const std::string& body = "") {
        const host::WebAnswer answer = Ask(method, target, body);
        EXPECT_EQ(200, answer.status) << answer.body;
        return nlohmann::json::parse(answer.body);
    }
    std::string RaiseOne(const std::string& json = R"({"text": "x"})") {
        return Asked("POST", "/api/v1/alarms", json)[0]["alarm"].dump();
    }

    void ExpectMistake(const std::string& method, const std::string& target,
                       const std::string& body, const char* field, const char* says) {
        const host::WebAnswer answer = Ask(method, target, body);
        EXPECT_EQ(400, answer.status) << answer.body;
        const nlohmann::json json = nlohmann::json::parse(answer.body);
        EXPECT_EQ(field, json.value("field", "")) << body;
        EXPECT_THAT(json.value("error", ""), ::testing::HasSubstr(says)) << body;
    }

    host::Api api{database, log};
    std::string token;
};

#endif
