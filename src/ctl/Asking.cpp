#include "ctl/Asking.h"

#include "ctl/Connection.h"
#include "loader/OpenLibrary.h"

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

constexpr std::chrono::milliseconds patience{1500};

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

// Whether somebody is there, before a long wait for him.
std::expected<void, Unreachable> greet()
{
    const auto heard = sayToProgram(ControlRequest{.command = u"hello"_s}.toLine(), patience);
    if (!heard) {
        return std::unexpected(heard.error());
    }
    return {};
}

ControlAnswer cannotTell(const QString &why)
{
    return {.isRunning = false,
            .content =
                std::unexpected(ControlProblem{.kind = ControlProblem::Kind::Failed, .text = why})};
}

void keepAnswer(void *kept, const char *answer)
{
    *static_cast<QByteArray *>(kept) = answer;
}

// All that the program can do comes with that library.
ControlAnswer askFiles(const ControlRequest &request)
{
    using Take = void (*)(void *taker, const char *answer);
    using AnswerAlone = void (*)(const char *line, Take take, void *taker);
    void *const library = openLibrary("libostrelle.so");
    auto *const answerAlone = library != nullptr
                                  ? reinterpret_cast<AnswerAlone>(::dlsym(library, "answerAlone"))
                                  : nullptr;
    if (answerAlone == nullptr) {
        return cannotTell(QString::fromLocal8Bit(::dlerror()));
    }
    QByteArray line;
    answerAlone(request.toLine().constData(), &keepAnswer, &line);
    return readAnswer(line);
}

} // namespace

Asked ask(const ControlRequest &request, std::chrono::milliseconds within, Otherwise otherwise)
{
    const QByteArray line = request.toLine();
    if (line.size() >= maxRequestBytes) {
        return {.answer = cannotTell(u"that is too long"_s)};
    }
    std::expected<QByteArray, Unreachable> heard;
    if (const auto greeted = within > patience ? greet() : std::expected<void, Unreachable>();
        !greeted) {
        heard = std::unexpected(greeted.error());
    } else {
        heard = sayToProgram(line, within);
    }
    if (heard) {
        return {.answer = readAnswer(*heard)};
    }
    return {.answer = otherwise == Otherwise::FilesTell ? askFiles(request)
                                                        : ControlAnswer{.isRunning = false},
            .notRunning = describe(heard.error())};
}

} // namespace ostrelle
