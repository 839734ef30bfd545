// The texts of driver.h's Questions for a PostgreSQL server: known to builds without its client
// library, too.
#ifndef PAGERFWD_HOST_STORE_POSTGRES_QUESTIONS_H
#define PAGERFWD_HOST_STORE_POSTGRES_QUESTIONS_H

#include "host/store/driver.h"

namespace host {

const Questions& PostgresQuestions();

}  // namespace host

#endif
