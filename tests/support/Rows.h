#pragma once

#include <QTest>

// Fills the data table of a test function: a column for each type and its name, and a row for each
// call.
template<typename... Types>
class Rows
{
public:
    template<typename... Names>
    explicit Rows(Names... names)
    {
        (QTest::addColumn<Types>(names), ...);
    }

    void operator()(const char *name, const Types &...values) const
    {
        (QTest::newRow(name) << ... << values);
    }
};
