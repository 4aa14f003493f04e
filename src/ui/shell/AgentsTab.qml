import Ostrelle

AgentsView {
    id: tab

    required property ContentPanel panel

    viewModel: tab.panel.models.makeAgents(tab)
}
