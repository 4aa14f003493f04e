pragma ComponentBehavior: Bound

import QtQuick
import Ostrelle

// The projects with their workstreams, as cards.
DashboardPage {
    id: view

    required property ProjectsViewModel viewModel

    label: "PROJECTS"
    title: "Project Board"
    count: view.viewModel.healthyProjectCount + "/" + view.viewModel.projectCount
    countDescription: "healthy projects"
    isLoading: view.viewModel.isLoading
    errorMessage: view.viewModel.errorMessage
    isEmpty: view.viewModel.projectCount === 0
    emptyMessage: "No project tracker data yet."
    cards: view.viewModel.projectList
    onRefreshRequested: {
        view.viewModel.load();
        view.viewModel.triggerProjectSync();
    }

    delegate: ProjectCard {
        page: view
    }
}
