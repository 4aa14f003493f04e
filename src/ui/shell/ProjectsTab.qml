import Ostrelle

ProjectsView {
    id: tab

    required property ContentPanel panel

    viewModel: tab.panel.models.makeProjects(tab)
}
