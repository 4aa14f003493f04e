#include "statusserver/AnswerMemory.h"

namespace ostrelle
{

namespace
{

class Share
{
public:
    Share(std::shared_ptr<std::atomic<std::size_t>> sum, std::size_t bytes)
        : m_sum(std::move(sum))
        , m_bytes(bytes)
    {
        *m_sum += m_bytes;
    }
    ~Share() { *m_sum -= m_bytes; }
    Share(const Share &) = delete;
    Share &operator=(const Share &) = delete;

private:
    const std::shared_ptr<std::atomic<std::size_t>> m_sum;
    const std::size_t m_bytes;
};

struct Counted {
    Counted(Response &&answer, const std::shared_ptr<std::atomic<std::size_t>> &sum)
        : share(sum, answer.storage.capacity())
        , response(std::move(answer))
    {
    }

    Share share; // ends after the memory was given back
    Response response;
};

} // namespace

SharedResponse AnswerMemory::keep(Response response)
{
    const auto counted = std::make_shared<Counted>(std::move(response), m_bytes);
    return {counted, &counted->response};
}

} // namespace ostrelle
