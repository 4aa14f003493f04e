import Ostrelle

AgentsView {
    required property ContentPanel panel
}
