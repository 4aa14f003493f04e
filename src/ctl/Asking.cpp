#include "ctl/Asking.h"

#include "ctl/Connection.h"
#include "loader/OpenLibrary.h"

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// As long as the program works on it, which gives up before.
constexpr std::chrono::seconds longestWait{160};

QString describe(Unreachable why)
{
    switch (why) {
    case Unreachable::NotRunning:
        return u"Ostrelle does not run"_s;
    case Unreachable::NoAnswer:
        return u"Ostrelle does not answer"_s;
    case Unreachable::Stranger:
        return u"Ostrelle does not run: another user listens in its place"_s;
    }
    Q_UNREACHABLE();
}

void keepAnswer(void *kept, const char *answer)
{
    *static_cast<QByteArray *>(kept) = answer;
}

// All that the program can do comes with that library.
std::expected<QJsonObject, QString> askFiles(const ControlRequest &request)
{
    using Take = void (*)(void *taker, const char *answer);
    using AnswerAlone = void (*)(const char *line, Take take, void *taker);
    void *const library = openLibrary("libostrelle.so");
    auto *const answerAlone = library != nullptr
                                  ? reinterpret_cast<AnswerAlone>(::dlsym(library, "answerAlone"))
                                  : nullptr;
    if (answerAlone == nullptr) {
        return std::unexpected(QString::fromLocal8Bit(::dlerror()));
    }
    QByteArray line;
    answerAlone(request.toLine().constData(), &keepAnswer, &line);
    return readAnswer(line);
}

} // namespace

Asked ask(const ControlRequest &request, Otherwise otherwise)
{
    const QByteArray line = request.toLine();
    if (line.size() >= maxRequestBytes) {
        return {.answer = std::unexpected(u"that is too long"_s)};
    }
    const auto heard = sayToProgram(line, longestWait);
    if (heard) {
        return {.answer = readAnswer(*heard)};
    }
    const QString why = describe(heard.error());
    return {.answer = otherwise == Otherwise::FilesTell ? askFiles(request) : std::unexpected(why),
            .notRunning = why};
}

} // namespace ostrelle
