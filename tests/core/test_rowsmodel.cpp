#include "core/RowsModel.h"
#include "support/Rows.h"

#include <QAbstractItemModelTester>
#include <QRandomGenerator>
#include <QTest>

using namespace ostrelle;
using namespace Qt::StringLiterals;

namespace
{

struct Letter {
    QChar id;
    int value = 0;

    QString identity() const { return id; }
    friend bool operator==(const Letter &, const Letter &) = default;
};

class Letters : public RowsModel<Letter>
{
public:
    using RowsModel::setRows;

    QVariant data(const QModelIndex &index, int role) const override
    {
        return role == Qt::UserRole ? QVariant(rows().at(index.row()).value) : QVariant();
    }
};

// "a1b" is the row a of value 1, then the row b of value 0.
QList<Letter> letters(const QString &text)
{
    QList<Letter> rows;
    for (const QChar c : text) {
        if (c.isDigit()) {
            rows.last().value = c.digitValue();
        } else {
            rows.append({c});
        }
    }
    return rows;
}

// What a view that starts with `before` makes of the model's signals.
class Follower
{
public:
    explicit Follower(Letters &model)
        : m_rows(model.rows())
    {
        QObject::connect(&model, &Letters::rowsRemoved, &m_connections,
                         [this](const QModelIndex &, int a, int b) {
                             m_rows.remove(a, b - a + 1);
                             m_steps += u"-%1 "_s.arg(b - a + 1);
                         });
        QObject::connect(&model, &Letters::rowsMoved, &m_connections,
                         [this](const QModelIndex &, int from, int, const QModelIndex &, int to) {
                             m_rows.move(from, to > from ? to - 1 : to);
                             m_steps += u"m "_s;
                         });
        QObject::connect(&model, &Letters::rowsInserted, &m_connections,
                         [&model, this](const QModelIndex &, int a, int b) {
                             for (int i = a; i <= b; ++i) {
                                 m_rows.insert(i, model.rows().at(i));
                             }
                             m_steps += u"+%1 "_s.arg(b - a + 1);
                         });
        QObject::connect(&model, &Letters::dataChanged, &m_connections,
                         [&model, this](const QModelIndex &a, const QModelIndex &b) {
                             for (int i = a.row(); i <= b.row(); ++i) {
                                 m_rows[i] = model.rows().at(i);
                             }
                             m_steps += u"c%1 "_s.arg(b.row() - a.row() + 1);
                         });
        QObject::connect(&model, &Letters::modelReset, &m_connections, [&model, this] {
            m_rows = model.rows();
            m_steps += u"reset "_s;
        });
    }

    const QList<Letter> &rows() const { return m_rows; }
    QString steps() const { return m_steps.trimmed(); }

private:
    QList<Letter> m_rows;
    QString m_steps;
    QObject m_connections;
};

} // namespace

class TestRowsModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void changesOnlyWhatDiffers_data()
    {
        const Rows<QString, QString, QString> row("before", "after", "steps");
        row("two runs change", u"abcd"_s, u"a1b1cd1"_s, u"c2 c1"_s);
        row("first to the end", u"abcd"_s, u"bcda"_s, u"m"_s);
        row("last two to the front, one changed", u"abcd"_s, u"d1cab"_s, u"m m c1"_s);
        row("all of it", u"abcdef"_s, u"xfbyc1"_s, u"-2 -1 m +1 +1 c1"_s);
        row("same identity twice", u"a1a2b"_s, u"ba1a2"_s, u"m"_s);
    }

    void changesOnlyWhatDiffers()
    {
        QFETCH(QString, before);
        QFETCH(QString, after);
        Letters model;
        const QAbstractItemModelTester tester(&model);
        model.setRows(letters(before));
        const Follower view(model);
        model.setRows(letters(after));
        QCOMPARE(model.rows(), letters(after));
        QCOMPARE(view.rows(), letters(after));
        QTEST(view.steps(), "steps");
    }

    void followsAnyChange()
    {
        QRandomGenerator random(1);
        Letters model;
        const QAbstractItemModelTester tester(&model);
        for (int round = 0; round < 300; ++round) {
            QList<Letter> next;
            for (qsizetype i = random.bounded(12); i > 0; --i) {
                next.append({QChar(u'a' + random.bounded(9)), random.bounded(2)});
            }
            const Follower view(model);
            model.setRows(next);
            QCOMPARE(view.rows(), next);
        }
    }

    void startsAfreshWhenAlmostAllMoves()
    {
        QList<Letter> rows;
        for (char16_t c = 0; c < 5000; ++c) {
            rows.append({QChar(c)});
        }
        Letters model;
        model.setRows(rows);
        const Follower view(model);
        std::ranges::reverse(rows);
        model.setRows(rows);
        QCOMPARE(view.steps(), u"reset"_s);
        QCOMPARE(model.rows(), rows);
    }
};

QTEST_APPLESS_MAIN(TestRowsModel)
#include "test_rowsmodel.moc"
