pragma ComponentBehavior: Bound

import QtQuick
import Ostrelle

// The gateway's scheduled jobs, as cards.
DashboardPage {
    id: view

    required property CronViewModel viewModel

    label: "CRON"
    title: "Scheduled Jobs"
    count: view.viewModel.activeJobCount + "/" + view.viewModel.jobCount
    countDescription: "active jobs"
    isLoading: view.viewModel.isLoading
    errorMessage: view.viewModel.errorMessage
    isEmpty: view.viewModel.jobCount === 0
    emptyMessage: "No cron jobs configured yet."
    cards: view.viewModel.jobList
    onRefreshRequested: view.viewModel.load()

    delegate: CronJobCard {
        page: view
    }
}
