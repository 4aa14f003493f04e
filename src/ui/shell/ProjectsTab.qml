import Ostrelle

ProjectsView {
    required property ContentPanel panel

    viewModel: ProjectsViewModel {}
}
