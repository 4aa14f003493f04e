#pragma once

#include <QByteArray>

#include <optional>

namespace ostrelle
{

// A square of dark and light modules. The default one is empty.
class QrCode
{
public:
    // The side of a module in pixels, and how many light modules a reader wants around the code.
    static constexpr int scale = 10;
    static constexpr int quietZone = 4;

    QrCode() = default;

    // How much of it may be damaged: levels L and M.
    enum class Correction { Low, Medium };

    // Absent when there are no bytes or more than fit.
    static std::optional<QrCode> encode(const QByteArray &bytes,
                                        Correction correction = Correction::Medium);

    int size() const { return m_size; } // modules a side
    bool isEmpty() const { return m_size == 0; }
    bool isDark(int column, int row) const { return m_modules.at(row * m_size + column) != 0; }

    friend bool operator==(const QrCode &, const QrCode &) = default;

private:
    int m_size = 0;
    QByteArray m_modules; // row by row; 1 is dark
};

} // namespace ostrelle
