#include "platform/hal/pipewire/AggregateNodes.h"

#include <algorithm>
#include <utility>

namespace cantorel::hal {

namespace {

// The ports that give a device's input side, in order; empty while it is not there.
std::vector<std::uint32_t> inputSideOf(const PipeWireGraph &graph, const QString &uid) {
    std::vector<std::uint32_t> ports;
    if (const GraphNode *node = graph.nodeBehind(uid)) {
        for (const GraphPort &port : graph.portsOf(node->id, false))
            ports.push_back(port.id);
    }
    // Links mix nothing down: of an output with more channels the front ones are taken.
    if (uid == QLatin1String(kOutputMonitorUid) && !ports.empty())
        ports.resize(kOutputMonitorChannels, ports.front());
    return ports;
}

ProxyHandle makeNode(pw_core *core, const AggregateSpec &spec, std::size_t channels) {
    QByteArray positions;
    for (std::size_t i = 0; i < channels; ++i)
        positions += (i > 0 ? "," : "") + ("AUX" + QByteArray::number(static_cast<int>(i)));
    pw_properties *properties = pw_properties_new(
        PW_KEY_FACTORY_NAME, "support.null-audio-sink", PW_KEY_NODE_NAME, spec.uid.toUtf8().constData(),
        PW_KEY_NODE_DESCRIPTION, spec.name.toUtf8().constData(), PW_KEY_MEDIA_CLASS, "Audio/Source/Virtual",
        "audio.position", positions.constData(), PW_KEY_PRIORITY_SESSION, "50", PW_KEY_NODE_VIRTUAL, "true", nullptr);
    auto *proxy = static_cast<pw_proxy *>(
        pw_core_create_object(core, "adapter", PW_TYPE_INTERFACE_Node, PW_VERSION_NODE, &properties->dict, 0));
    pw_properties_free(properties);
    return ProxyHandle(proxy);
}

ProxyHandle makeLink(pw_core *core, std::uint32_t output, std::uint32_t input) {
    pw_properties *properties =
        pw_properties_new(PW_KEY_LINK_OUTPUT_PORT, QByteArray::number(output).constData(), PW_KEY_LINK_INPUT_PORT,
                          QByteArray::number(input).constData(), nullptr);
    auto *proxy = static_cast<pw_proxy *>(
        pw_core_create_object(core, "link-factory", PW_TYPE_INTERFACE_Link, PW_VERSION_LINK, &properties->dict, 0));
    pw_properties_free(properties);
    return ProxyHandle(proxy);
}

// Whether somebody has taken away a link that was there.
bool isGone(const PipeWireGraph &graph, const ProxyHandle &link) {
    const std::uint32_t id = link ? pw_proxy_get_bound_id(link.get()) : SPA_ID_INVALID;
    return id != SPA_ID_INVALID && !graph.hasLink(id);
}

} // namespace

void AggregateNodes::put(const AggregateSpec &spec) {
    const auto same = [&](const auto &other) { return other->spec.uid == spec.uid; };
    const auto found = std::find_if(mAggregates.begin(), mAggregates.end(), same);
    if (found != mAggregates.end()) {
        const bool sameMembers = (*found)->spec.subDeviceUids == spec.subDeviceUids && (*found)->spec.name == spec.name;
        (*found)->spec = spec;
        if (sameMembers)
            return; // The server chooses the leading clock itself.
        (*found)->widths.clear();
        drop(**found);
        return;
    }
    mAggregates.push_back(std::make_unique<Aggregate>());
    mAggregates.back()->spec = spec;
}

void AggregateNodes::drop(Aggregate &aggregate) {
    if (aggregate.node)
        aggregate.leaving = pw_proxy_get_bound_id(aggregate.node.get());
    aggregate.links.clear();
    aggregate.node.reset();
    aggregate.ports.clear();
    aggregate.complete = false;
}

void AggregateNodes::remove(const QString &uid) {
    std::erase_if(mAggregates, [&](const auto &other) { return other->spec.uid == uid; });
}

void AggregateNodes::maintain(PipeWireGraph &graph) {
    for (const auto &aggregate : mAggregates)
        maintain(*aggregate, graph);
}

// The ports to link, one a channel, invalid for silence. Nothing while the device cannot be there, or not as it is.
std::optional<std::vector<std::uint32_t>> AggregateNodes::portsFor(Aggregate &aggregate, const PipeWireGraph &graph) {
    const std::size_t members = static_cast<std::size_t>(aggregate.spec.subDeviceUids.size());
    std::vector<std::vector<std::uint32_t>> sides;
    for (const QString &member : aggregate.spec.subDeviceUids)
        sides.push_back(inputSideOf(graph, member));
    const auto isAway = [](const auto &side) { return side.empty(); };
    if (std::all_of(sides.begin(), sides.end(), isAway))
        return {};
    aggregate.present.resize(members);
    bool others = aggregate.widths.empty();
    for (std::size_t i = 0; i < members && !others; ++i) // One that comes back shows its ports one after the other.
        others = aggregate.present[i] && !sides[i].empty() && sides[i].size() != aggregate.widths[i];
    if (others) {
        const bool known = aggregate.widths.empty();
        aggregate.widths.clear();
        if (std::any_of(sides.begin(), sides.end(), isAway))
            return {};
        for (const auto &side : sides)
            aggregate.widths.push_back(side.size());
        aggregate.present.assign(members, true);
        if (!known)
            return {}; // The existing one is made again.
    }
    std::vector<std::uint32_t> ports;
    for (std::size_t i = 0; i < members; ++i) {
        aggregate.present[i] = sides[i].size() >= aggregate.widths[i];
        sides[i].resize(aggregate.widths[i], SPA_ID_INVALID);
        ports.insert(ports.end(), sides[i].begin(), sides[i].end());
    }
    return ports;
}

void AggregateNodes::maintain(Aggregate &aggregate, PipeWireGraph &graph) {
    const auto ports = portsFor(aggregate, graph);
    if (!ports) {
        drop(aggregate);
        return;
    }
    const GraphNode *node = graph.nodeNamed(aggregate.spec.uid);
    if (node && node->id == aggregate.leaving)
        return; // The one that we have dropped, on its way out.
    aggregate.leaving = SPA_ID_INVALID;
    if (!node) {
        aggregate.links.clear();
        aggregate.ports.clear();
        aggregate.complete = false;
        if (!aggregate.node)
            aggregate.node = makeNode(graph.core(), aggregate.spec, ports->size());
        return;
    }
    if (!aggregate.node) {
        aggregate.complete = true; // Another instance of the program keeps it.
        return;
    }
    const std::vector<GraphPort> inputs = graph.portsOf(node->id, true);
    if (inputs.size() == ports->size()) {
        aggregate.links.resize(ports->size());
        aggregate.ports.resize(ports->size(), SPA_ID_INVALID);
        for (std::size_t i = 0; i < ports->size(); ++i) {
            const std::uint32_t port = (*ports)[i];
            if (isGone(graph, aggregate.links[i]))
                aggregate.ports[i] = SPA_ID_INVALID; // made again
            if (std::exchange(aggregate.ports[i], port) == port)
                continue;
            aggregate.links[i].reset();
            if (port != SPA_ID_INVALID)
                aggregate.links[i] = makeLink(graph.core(), port, inputs[i].id);
        }
    }
    aggregate.complete = aggregate.links.size() == ports->size()
                         && std::find(ports->begin(), ports->end(), SPA_ID_INVALID) == ports->end()
                         && graph.portsOf(node->id, false).size() == ports->size();
}

bool AggregateNodes::joins(const QString &uid, const char *member) const {
    return std::any_of(mAggregates.begin(), mAggregates.end(), [&](const auto &other) {
        return other->spec.uid == uid && other->spec.subDeviceUids.contains(QLatin1String(member));
    });
}

bool AggregateNodes::isComplete(const QString &uid) const {
    return std::any_of(mAggregates.begin(), mAggregates.end(),
                       [&](const auto &other) { return other->spec.uid == uid && other->complete; });
}

void AggregateNodes::forgetServer() {
    for (const auto &aggregate : mAggregates) {
        drop(*aggregate);
        aggregate->leaving = SPA_ID_INVALID;
    }
}

} // namespace cantorel::hal
