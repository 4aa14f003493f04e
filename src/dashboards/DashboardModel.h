#pragma once

#include "core/BackgroundWork.h"
#include "core/WhenDone.h"
#include "platform/Heap.h"
#include "settings/Settings.h"

#include <QObject>
#include <QProperty>

namespace ostrelle
{

// What the dashboards' models share: they load their documents in the background and publish on the
// main thread what they found. Loads may overlap, and the later publication wins; no fifth load is
// started while four are under way. Main thread only.
class DashboardModel : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool isLoading READ isLoading NOTIFY isLoadingChanged)
    // Empty when there is nothing to tell.
    Q_PROPERTY(QString errorMessage READ errorMessage NOTIFY errorMessageChanged)

public:
    bool isLoading() const { return m_isLoading; }
    QString errorMessage() const { return m_errorMessage; }

Q_SIGNALS:
    void isLoadingChanged();
    void errorMessageChanged();

protected:
    explicit DashboardModel(QObject *parent)
        : QObject(parent)
    {
    }

    void setErrorMessage(const QString &text) { m_errorMessage = text; }

    // Calls `work` on a background thread, where it must not touch this object, and then
    // `publish(result)` here. The result is a shared pointer, because thousands of records take
    // long to copy. Freeing them takes long too, so that happens in the background.
    template<typename Work, typename Publish>
    void startLoad(const Work &work, const Publish &publish)
    {
        m_isLoading = true;
        const PassLimit::Pass pass = m_loads.begin();
        if (!pass) {
            return;
        }
        using Result = std::shared_ptr<const std::invoke_result_t<Work>>;
        const auto load = [work, pass] { return freedInBackground(work()); };
        whenDone(userInitiatedPool().run(load), this, [this, publish](const Result &result) {
            publish(result);
            m_isLoading = false;
        });
    }

private:
    template<typename Value>
    static std::shared_ptr<const Value> freedInBackground(Value value)
    {
        return {new Value(std::move(value)), [](const Value *unused) {
                    utilityPool().start([owned = std::shared_ptr<const Value>(unused)]() mutable {
                        owned.reset();
                        trimHeap(); // also of what the load took: another machine may send much
                    });
                }};
    }

    PassLimit m_loads{4};
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(DashboardModel, bool, m_isLoading, false,
                                         &DashboardModel::isLoadingChanged)
    Q_OBJECT_BINDABLE_PROPERTY(DashboardModel, QString, m_errorMessage,
                               &DashboardModel::errorMessageChanged)
};

} // namespace ostrelle
