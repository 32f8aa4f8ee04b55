#include "BenchEngines.h"

#include <cstring>
#include <ibase.h>
#include <vector>

BenchData::Raw BenchData::rawFirebird(const char *sql)
{
    Raw raw;
    raw.ms = bestOf(3, [&] {
        ISC_STATUS_ARRAY status;
        isc_db_handle db = 0;
        isc_tr_handle tr = 0;
        isc_stmt_handle stmt = 0;
        const QByteArray user = qgetenv("VANTRY_FB_USER"), password = qgetenv("VANTRY_FB_PASSWORD");
        const QByteArray path = qgetenv("VANTRY_FB_HOST") + '/' + qgetenv("VANTRY_FB_PORT") + ':' + qgetenv("VANTRY_FB_DATABASE");
        QByteArray dpb(1, char(isc_dpb_version1));
        auto add = [&dpb](char tag, const QByteArray &value) { dpb += tag; dpb += char(value.size()); dpb += value; };
        add(isc_dpb_user_name, user);
        add(isc_dpb_password, password);
        add(isc_dpb_lc_ctype, "UTF8");
        if (isc_attach_database(status, 0, path.constData(), &db, short(dpb.size()), dpb.constData())) {
            isc_print_status(status);
            return;
        }
        isc_start_transaction(status, &tr, 1, &db, 0, nullptr);
        isc_dsql_allocate_statement(status, &db, &stmt);
        std::vector<char> daMemory(XSQLDA_LENGTH(10));
        auto *da = reinterpret_cast<XSQLDA *>(daMemory.data());
        da->version = SQLDA_VERSION1;
        da->sqln = 10;
        isc_dsql_prepare(status, &tr, &stmt, 0, sql, SQL_DIALECT_V6, da);
        std::vector<std::vector<char>> buffers(size_t(da->sqld));
        std::vector<short> nulls(size_t(da->sqld));
        for (int c = 0; c < da->sqld; ++c) {
            XSQLVAR &var = da->sqlvar[c];
            buffers[size_t(c)].resize(size_t(var.sqllen) + 2);
            var.sqldata = buffers[size_t(c)].data();
            var.sqlind = &nulls[size_t(c)];
        }
        isc_dsql_execute(status, &tr, &stmt, SQL_DIALECT_V6, nullptr);
        quint64 payload = 0, sum = 0;
        while (isc_dsql_fetch(status, &stmt, SQL_DIALECT_V6, da) == 0) {
            for (int c = 0; c < da->sqld; ++c) {
                const XSQLVAR &var = da->sqlvar[c];
                if (*var.sqlind < 0)
                    continue;
                if ((var.sqltype & ~1) == SQL_VARYING) {
                    short length;
                    std::memcpy(&length, var.sqldata, sizeof length);
                    sum += length ? quint64(var.sqldata[2]) : 0;
                    payload += quint64(length);
                } else {
                    sum += quint64(var.sqldata[0]);
                    payload += 8;
                }
            }
        }
        isc_dsql_free_statement(status, &stmt, DSQL_drop);
        isc_commit_transaction(status, &tr);
        isc_detach_database(status, &db);
        raw.payload = payload;
        raw.checksum = sum;
    });
    return raw;
}
