#pragma once

#include "platform/hal/pipewire/PipeWireGraph.h"

namespace cantorel::hal {

// Keeps the aggregate devices on the server. Each is a source that other programs see, with inputs linked to the
// members' ports. It is made when all members exist; the channels of a member that disappears are silent until it is
// back, and the device disappears with its last member. Owned by PipeWireBackend, which locks the loop for every call.
class AggregateNodes {
public:
    void put(const AggregateSpec &spec);
    void remove(const QString &uid);

    // Makes what is missing and removes what has lost a member; called whenever the graph has changed. The links follow
    // the node's ports, so that a device takes several changes to be complete.
    void maintain(PipeWireGraph &graph);
    // Whether it is an aggregate with that member.
    bool joins(const QString &uid, const char *member) const;
    // Whether the device is there with the links of all members.
    bool isComplete(const QString &uid) const;
    // The server is gone, and what we made on it.
    void forgetServer();

private:
    struct Aggregate {
        AggregateSpec spec;
        ProxyHandle node;                       // null when another program made it, or none has yet
        std::uint32_t leaving = SPA_ID_INVALID; // our last node, while the server may still show it
        std::vector<std::size_t> widths;        // channels of each member, once all have been there
        std::vector<bool> present;              // members, as seen last
        std::vector<ProxyHandle> links;         // one a channel; null while its member is away
        std::vector<std::uint32_t> ports;       // of the members, in the order of the channels; as linked
        bool complete = false;
    };

    static std::optional<std::vector<std::uint32_t>> portsFor(Aggregate &aggregate, const PipeWireGraph &graph);
    static void drop(Aggregate &aggregate);
    void maintain(Aggregate &aggregate, PipeWireGraph &graph);

    std::vector<std::unique_ptr<Aggregate>> mAggregates;
};

} // namespace cantorel::hal
