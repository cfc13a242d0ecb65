// The calls of libpq that a restore makes (COPY on the connection Qt's driver opened), found in the
// library when first made instead of linked: linking libpq would load it and what it pulls in
// (Kerberos, LDAP, TLS, about twenty libraries) at every start of the program, before the sign-in.
// Whenever a restore has a connection to copy into, Qt's PostgreSQL driver has loaded libpq already,
// so opening it here finds it in the process. The definitions are hidden: the library does not
// offer them to the driver or to anyone else.
#pragma GCC visibility push(hidden)
#include <postgresql/libpq-fe.h>
#pragma GCC visibility pop

#include "data/ondemandlibrary.h"

#define ZAREK_LIBPQ_CALL(...) ZAREK_ON_DEMAND("libpq.so.5", __VA_ARGS__)

ZAREK_LIBPQ_CALL(PGresult *, PQexec, (PGconn * connection, const char *query), (connection, query))
ZAREK_LIBPQ_CALL(ExecStatusType, PQresultStatus, (const PGresult *result), (result))
ZAREK_LIBPQ_CALL(char *, PQresultErrorMessage, (const PGresult *result), (result))
ZAREK_LIBPQ_CALL(void, PQclear, (PGresult * result), (result))
ZAREK_LIBPQ_CALL(char *, PQerrorMessage, (const PGconn *connection), (connection))
ZAREK_LIBPQ_CALL(PGresult *, PQgetResult, (PGconn * connection), (connection))
ZAREK_LIBPQ_CALL(int, PQputCopyData, (PGconn * connection, const char *buffer, int bytes), (connection, buffer, bytes))
ZAREK_LIBPQ_CALL(int, PQputCopyEnd, (PGconn * connection, const char *error), (connection, error))
ZAREK_LIBPQ_CALL(int, PQgetCopyData, (PGconn * connection, char **buffer, int async), (connection, buffer, async))
ZAREK_LIBPQ_CALL(void, PQfreemem, (void *pointer), (pointer))
ZAREK_LIBPQ_CALL(ConnStatusType, PQstatus, (const PGconn *connection), (connection))
ZAREK_LIBPQ_CALL(PGTransactionStatusType, PQtransactionStatus, (const PGconn *connection), (connection))
ZAREK_LIBPQ_CALL(PGresult *, PQexecParams,
                 (PGconn * connection, const char *command, int count, const Oid *types, const char *const *values,
                  const int *lengths, const int *formats, int resultFormat),
                 (connection, command, count, types, values, lengths, formats, resultFormat))
ZAREK_LIBPQ_CALL(int, PQntuples, (const PGresult *result), (result))
ZAREK_LIBPQ_CALL(char *, PQgetvalue, (const PGresult *result, int row, int column), (result, row, column))
ZAREK_LIBPQ_CALL(char *, PQcmdTuples, (PGresult * result), (result))
ZAREK_LIBPQ_CALL(int, PQsetnonblocking, (PGconn * connection, int arg), (connection, arg))
ZAREK_LIBPQ_CALL(int, PQflush, (PGconn * connection), (connection))
