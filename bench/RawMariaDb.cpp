#include "BenchEngines.h"

#include <cstring>
#include <mysql.h>

BenchData::Raw BenchData::rawMariaDb(const char *sql)
{
    Raw raw;
    raw.ms = bestOf(3, [&] {
        MYSQL *conn = mysql_init(nullptr);
        const QByteArray host = qgetenv("VANTRY_MYSQL_HOST"), user = qgetenv("VANTRY_MYSQL_USER"),
                         password = qgetenv("VANTRY_MYSQL_PASSWORD"), database = qgetenv("VANTRY_MYSQL_DATABASE");
        if (!mysql_real_connect(conn, host.constData(), user.constData(), password.constData(), database.constData(),
                                qEnvironmentVariableIntValue("VANTRY_MYSQL_PORT"), nullptr, 0)) {
            std::printf("MariaDB: %s\n", mysql_error(conn));
            return;
        }
        mysql_real_query(conn, sql, std::strlen(sql));
        MYSQL_RES *result = mysql_use_result(conn);
        const unsigned int cols = mysql_num_fields(result);
        quint64 payload = 0, sum = 0;
        while (MYSQL_ROW row = mysql_fetch_row(result)) {
            const unsigned long *lengths = mysql_fetch_lengths(result);
            for (unsigned int c = 0; c < cols; ++c) {
                if (!row[c])
                    continue;
                sum += lengths[c] ? quint64(row[c][0]) : 0;
                payload += c < 5 ? 8 : lengths[c];
            }
        }
        mysql_free_result(result);
        mysql_close(conn);
        raw.payload = payload;
        raw.checksum = sum;
    });
    return raw;
}
