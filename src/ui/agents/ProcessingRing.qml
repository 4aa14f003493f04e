import Ostrelle

// The arc that sweeps to and fro around an agent at work.
Symbol {
    id: ring

    required property real phase // 0 to 1, of one way around

    name: "arc"
    size: Math.round(ring.width)
    rotation: 360 * ring.phase
}
