#include "core/app/SampleDatabase.h"
#include "core/base/SqlErrorText.h"

#include "core/base/VantryError.h"
#include "core/connections/vtrtools.h"

#include <QDate>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QUuid>
#include <QVariant>

#include <cmath>

namespace SampleDatabase {

namespace {

// A small linear congruential generator: the same rows on every machine and every Qt version.
class Dice
{
public:
    explicit Dice(quint32 seed) : m_state(seed) {}
    int below(int n) // 0 .. n-1
    {
        m_state = m_state * 1664525u + 1013904223u;
        return int((m_state >> 8) % quint32(n));
    }
    template <typename T, size_t N>
    const T &pick(const T (&items)[N]) { return items[below(int(N))]; }

private:
    quint32 m_state;
};

double money(double value) { return std::round(value * 100.0) / 100.0; }

// ORDERS and OLD_ORDERS share their columns: old orders are orders moved out of the way.
#define ORDER_COLUMNS \
    " ORDER_ID INTEGER PRIMARY KEY," \
    " CUSTOMER_ID INTEGER NOT NULL REFERENCES CUSTOMERS(CUSTOMER_ID)," \
    " ORDER_DATE DATE NOT NULL," \
    " SHIP_CITY VARCHAR(40)," \
    " SHIP_COUNTRY VARCHAR(40)," \
    " STATUS VARCHAR(12)," \
    " TOTAL NUMERIC(12,2))"

const char *const kSchema[] = {
    "CREATE TABLE CUSTOMERS ("
    " CUSTOMER_ID INTEGER PRIMARY KEY,"
    " COMPANY_NAME VARCHAR(80) NOT NULL,"
    " CONTACT_NAME VARCHAR(60),"
    " EMAIL VARCHAR(80),"
    " PHONE VARCHAR(24),"
    " CITY VARCHAR(40),"
    " COUNTRY VARCHAR(40),"
    " CREATED_AT DATE)",
    "CREATE TABLE PRODUCTS ("
    " PRODUCT_ID INTEGER PRIMARY KEY,"
    " PRODUCT_NAME VARCHAR(80) NOT NULL,"
    " CATEGORY VARCHAR(40),"
    " UNIT_PRICE NUMERIC(10,2),"
    " UNITS_IN_STOCK INTEGER,"
    " DISCONTINUED INTEGER NOT NULL DEFAULT 0)",
    "CREATE TABLE ORDERS (" ORDER_COLUMNS,
    "CREATE TABLE ORDER_ITEMS ("
    " ORDER_ID INTEGER NOT NULL REFERENCES ORDERS(ORDER_ID),"
    " LINE_NO INTEGER NOT NULL,"
    " PRODUCT_ID INTEGER NOT NULL REFERENCES PRODUCTS(PRODUCT_ID),"
    " QUANTITY INTEGER NOT NULL,"
    " UNIT_PRICE NUMERIC(10,2) NOT NULL,"
    " DISCOUNT NUMERIC(4,2) NOT NULL DEFAULT 0,"
    " PRIMARY KEY (ORDER_ID, LINE_NO))",
    "CREATE TABLE OLD_ORDERS (" ORDER_COLUMNS,
    "CREATE INDEX IX_ORDERS_CUSTOMER ON ORDERS(CUSTOMER_ID)",
    "CREATE INDEX IX_ORDER_ITEMS_PRODUCT ON ORDER_ITEMS(PRODUCT_ID)",
};

#undef ORDER_COLUMNS

const char *const kFirstNames[] = {"Anna", "Ben", "Clara", "David", "Elena", "Farid", "Greta",
                                   "Hugo", "Ines", "Jonas", "Kaori", "Lukas", "Maria", "Nils",
                                   "Olga", "Pedro", "Rosa", "Sven", "Tereza", "Yusuf"};
const char *const kLastNames[] = {"Berg", "Costa", "Dubois", "Eriksen", "Fischer", "García",
                                  "Horvath", "Jensen", "Kowalski", "Lindqvist", "Moreau", "Novak",
                                  "Okafor", "Petrov", "Rossi", "Schmidt", "Tanaka", "Weber"};
const char *const kCompanyWords[] = {"Alpine", "Blue River", "Cedar", "Delta", "Evergreen",
                                     "Fjord", "Granite", "Harbour", "Iron Bridge", "Juniper",
                                     "Kestrel", "Lakeside", "Meridian", "Northwind", "Orchard",
                                     "Pioneer", "Quarry", "Redwood", "Summit", "Tidewater"};
const char *const kCompanyKinds[] = {"Trading", "Supplies", "Foods", "Outfitters", "Market",
                                     "Imports", "& Sons", "Wholesale", "Stores", "Co."};
struct Place
{
    const char *city;
    const char *country;
    const char *phonePrefix;
};
const Place kPlaces[] = {
    {"Berlin", "Germany", "+49 30"},     {"Hamburg", "Germany", "+49 40"},
    {"Lyon", "France", "+33 4"},         {"Paris", "France", "+33 1"},
    {"Madrid", "Spain", "+34 91"},       {"Porto", "Portugal", "+351 22"},
    {"Milano", "Italy", "+39 02"},       {"Wien", "Austria", "+43 1"},
    {"Kraków", "Poland", "+48 12"},      {"Praha", "Czechia", "+420 2"},
    {"Göteborg", "Sweden", "+46 31"},    {"Oslo", "Norway", "+47 22"},
    {"Dublin", "Ireland", "+353 1"},     {"Leeds", "United Kingdom", "+44 113"},
    {"Toronto", "Canada", "+1 416"},     {"Portland", "USA", "+1 503"},
};
struct Product
{
    const char *name;
    const char *category;
    double price;
};
const Product kProducts[] = {
    {"Darjeeling Tea 250 g", "Beverages", 8.90},      {"Espresso Beans 1 kg", "Beverages", 21.50},
    {"Apple Juice 6 x 1 l", "Beverages", 12.40},      {"Sparkling Water 12 x 0.5 l", "Beverages", 6.80},
    {"Dark Chocolate 70 %", "Confections", 3.25},     {"Almond Biscuits", "Confections", 4.10},
    {"Maple Syrup 500 ml", "Condiments", 11.95},      {"Dijon Mustard", "Condiments", 2.75},
    {"Olive Oil Extra Virgin 1 l", "Condiments", 14.60}, {"Balsamic Vinegar", "Condiments", 9.30},
    {"Parmigiano 1 kg", "Dairy", 24.80},              {"Gouda Aged 500 g", "Dairy", 9.95},
    {"Butter 250 g", "Dairy", 2.49},                  {"Basmati Rice 5 kg", "Grains", 13.20},
    {"Spaghetti 12 x 500 g", "Grains", 15.60},        {"Rolled Oats 1 kg", "Grains", 2.95},
    {"Smoked Salmon 200 g", "Seafood", 7.85},         {"Anchovies in Oil", "Seafood", 3.60},
    {"Tuna Steaks 4 pcs", "Seafood", 16.40},          {"Dried Apricots 500 g", "Produce", 6.45},
    {"Sun-dried Tomatoes", "Produce", 5.20},          {"Walnuts 1 kg", "Produce", 17.90},
    {"Serrano Ham 100 g", "Meat", 5.95},              {"Chorizo 250 g", "Meat", 4.70},
};
const char *const kStatuses[] = {"SHIPPED", "SHIPPED", "SHIPPED", "DELIVERED", "DELIVERED",
                                 "INVOICED", "OPEN", "CANCELLED"};

constexpr int kCustomerCount = 30;
constexpr int kOrderCount = 150;
constexpr int kOldOrderCount = 60;

void exec(QSqlQuery &q)
{
    if (!q.exec())
        throw VantryError(QStringLiteral("The sample database could not be written: %1")
                              .arg(sqlErrorText(q.lastError())));
}

void exec(QSqlDatabase &db, const QString &sql)
{
    QSqlQuery q(db);
    if (!q.exec(sql))
        throw VantryError(QStringLiteral("The sample database could not be written: %1")
                              .arg(sqlErrorText(q.lastError())));
}

QSqlQuery prepared(QSqlDatabase &db, const QString &sql)
{
    QSqlQuery q(db);
    if (!q.prepare(sql))
        throw VantryError(QStringLiteral("The sample database could not be written: %1")
                              .arg(sqlErrorText(q.lastError())));
    return q;
}

void fillCustomers(QSqlDatabase &db, Dice &dice)
{
    QSqlQuery q = prepared(db, QStringLiteral("INSERT INTO CUSTOMERS VALUES (?, ?, ?, ?, ?, ?, ?, ?)"));
    for (int id = 1; id <= kCustomerCount; ++id) {
        const QString word = QString::fromUtf8(kCompanyWords[(id - 1) % 20]);
        const QString company = word + QLatin1Char(' ') + QString::fromUtf8(dice.pick(kCompanyKinds));
        const QString first = QString::fromUtf8(dice.pick(kFirstNames));
        const QString last = QString::fromUtf8(dice.pick(kLastNames));
        const Place &place = dice.pick(kPlaces);
        QString domain = word.toLower().remove(QLatin1Char(' ')) + QStringLiteral(".example");
        q.addBindValue(id);
        q.addBindValue(id <= 20 ? company : company + QStringLiteral(" ") + QString::fromUtf8(place.city));
        q.addBindValue(first + QLatin1Char(' ') + last);
        q.addBindValue(first.toLower() + QLatin1Char('.') + QString(last).toLower() + QLatin1Char('@') + domain);
        q.addBindValue(QStringLiteral("%1 %2 %3").arg(QLatin1String(place.phonePrefix))
                           .arg(100 + dice.below(900)).arg(1000 + dice.below(9000)));
        q.addBindValue(QString::fromUtf8(place.city));
        q.addBindValue(QString::fromUtf8(place.country));
        q.addBindValue(QDate(2019, 1, 1).addDays(dice.below(5 * 365)).toString(Qt::ISODate));
        exec(q);
    }
}

void fillProducts(QSqlDatabase &db, Dice &dice)
{
    QSqlQuery q = prepared(db, QStringLiteral("INSERT INTO PRODUCTS VALUES (?, ?, ?, ?, ?, ?)"));
    int id = 0;
    for (const Product &p : kProducts) {
        q.addBindValue(++id);
        q.addBindValue(QString::fromUtf8(p.name));
        q.addBindValue(QString::fromUtf8(p.category));
        q.addBindValue(p.price);
        q.addBindValue(dice.below(400));
        q.addBindValue(id % 11 == 0 ? 1 : 0);
        exec(q);
    }
}

// Orders, and with withItems their items; archived orders keep only their totals.
void fillOrders(QSqlDatabase &db, Dice &dice, const QString &table, int firstId, int count,
                const QDate &from, int days, bool withItems)
{
    QSqlQuery order = prepared(db, QStringLiteral("INSERT INTO %1 VALUES (?, ?, ?, ?, ?, ?, ?)").arg(table));
    QSqlQuery item = prepared(db, QStringLiteral("INSERT INTO ORDER_ITEMS VALUES (?, ?, ?, ?, ?, ?)"));
    QSqlQuery customer = prepared(db, QStringLiteral("SELECT CITY, COUNTRY FROM CUSTOMERS WHERE CUSTOMER_ID = ?"));
    const int productCount = int(sizeof kProducts / sizeof kProducts[0]);
    for (int n = 0; n < count; ++n) {
        const int orderId = firstId + n;
        const int customerId = 1 + dice.below(kCustomerCount);
        const QDate date = from.addDays(n * days / count + dice.below(3));
        const int lines = 1 + dice.below(5);
        double total = 0;
        struct Line { int product; int quantity; double price; double discount; };
        QVector<Line> items;
        for (int line = 0; line < lines; ++line) {
            const int product = 1 + (dice.below(productCount) + line * 7) % productCount;
            const Line l{product, 1 + dice.below(24), kProducts[product - 1].price,
                         dice.below(4) == 0 ? 0.05 * (1 + dice.below(3)) : 0.0};
            total += l.quantity * l.price * (1.0 - l.discount);
            items.append(l);
        }
        customer.addBindValue(customerId);
        exec(customer);
        customer.next();
        order.addBindValue(orderId);
        order.addBindValue(customerId);
        order.addBindValue(date.toString(Qt::ISODate));
        order.addBindValue(customer.value(0));
        order.addBindValue(customer.value(1));
        order.addBindValue(QString::fromLatin1(withItems && n >= count - 8 ? "OPEN" : dice.pick(kStatuses)));
        order.addBindValue(money(total));
        exec(order);
        customer.finish();
        if (!withItems)
            continue;
        for (int line = 0; line < items.size(); ++line) {
            item.addBindValue(orderId);
            item.addBindValue(line + 1);
            item.addBindValue(items[line].product);
            item.addBindValue(items[line].quantity);
            item.addBindValue(items[line].price);
            item.addBindValue(money(items[line].discount));
            exec(item);
        }
    }
}

void fill(QSqlDatabase &db)
{
    exec(db, QStringLiteral("PRAGMA foreign_keys = ON"));
    if (!db.transaction())
        throw VantryError(QStringLiteral("The sample database could not be written: %1")
                              .arg(sqlErrorText(db.lastError())));
    for (const char *statement : kSchema)
        exec(db, QString::fromLatin1(statement));
    Dice dice(20240117u);
    fillCustomers(db, dice);
    fillProducts(db, dice);
    fillOrders(db, dice, QStringLiteral("OLD_ORDERS"), 1, kOldOrderCount, QDate(2021, 1, 4), 700, false);
    fillOrders(db, dice, QStringLiteral("ORDERS"), 1001, kOrderCount, QDate(2024, 1, 2), 360, true);
    if (!db.commit())
        throw VantryError(QStringLiteral("The sample database could not be written: %1")
                              .arg(sqlErrorText(db.lastError())));
}

} // namespace

void create(const QString &sqliteFile)
{
    const QFileInfo target(sqliteFile);
    QDir().mkpath(target.absolutePath());
    // Built beside the target and renamed at the end, so an interrupted run leaves no half a sample.
    const QString part = target.absoluteFilePath() + QStringLiteral(".part");
    QFile::remove(part);
    const QString connection = QStringLiteral("vantry-sample-") + QUuid::createUuid().toString(QUuid::WithoutBraces);
    QString failure;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connection);
        db.setDatabaseName(part);
        if (!db.open()) {
            failure = QStringLiteral("The sample database %1 could not be created: %2")
                          .arg(sqliteFile, sqlErrorText(db.lastError()));
        } else {
            try {
                fill(db);
            } catch (const VantryError &e) {
                failure = e.message();
            }
            db.close();
        }
    }
    QSqlDatabase::removeDatabase(connection);
    if (failure.isEmpty()) {
        QFile::remove(target.absoluteFilePath());
        if (!QFile::rename(part, target.absoluteFilePath()))
            failure = QStringLiteral("The sample database %1 could not be written.").arg(sqliteFile);
    }
    if (!failure.isEmpty()) {
        QFile::remove(part);
        throw VantryError(failure);
    }
}

QString connectionName() { return QStringLiteral("Sample (SQLite)"); }

QByteArray packedParameters(const QString &sqliteFile)
{
    TReaderConnection rc;
    rc.ConnectionType = dsSqLite;
    rc.Description = connectionName();
    rc.DataBase = sqliteFile;
    rc.SourceFile = sqliteFile;
    return PackParameters(ReaderConnectionToStr(rc));
}

} // namespace SampleDatabase
