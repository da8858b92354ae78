#pragma once

#include "platform/hal/HardwareBackend.h"
#include "platform/pipewire/PipeWireHandles.h"

#include <QHash>

#include <map>
#include <utility>

namespace cantorel::hal {

// A node that is an audio device, as the server describes it.
struct GraphNode {
    std::uint32_t id = 0;
    QString name;        // node.name: the device's UID
    QString description; // what a person calls it
    QString mediaClass;
    bool isLoopback = false;
    std::vector<float> gains; // linear
    bool hasMute = false;
    bool muted = false;

    Direction direction() const { return isSink() ? Direction::Output : Direction::Input; }
    bool isSink() const { return mediaClass == QStringLiteral("Audio/Sink"); }
    bool isSource() const { return mediaClass.startsWith(QStringLiteral("Audio/Source")); }
};

struct GraphPort {
    std::uint32_t id = 0;
    std::uint32_t nodeId = 0;
    bool isInput = false;
    std::uint32_t index = 0; // within its node and direction
    QString channel;         // "FL", "AUX0", ...
};

struct GraphLink {
    std::uint32_t outputNode = 0, outputPort = 0;
    std::uint32_t inputNode = 0, inputPort = 0;
};

// The server's nodes, ports, links and metadata as this program sees them. Lives while the connection does; every
// function is called with the loop locked, and the changed function from the loop's thread.
class PipeWireGraph {
public:
    // loopbackNames: names of the sinks that are loopback devices, made by this or another program.
    PipeWireGraph(pw_core *core, QStringList loopbackNames, std::function<void()> changed);
    ~PipeWireGraph();

    // The devices in the order of their UIDs.
    std::vector<DeviceRecord> devices() const;
    const GraphNode *nodeNamed(const QString &name) const;
    // The node behind a UID: for that of the output's monitor the default output's.
    const GraphNode *nodeBehind(const QString &uid) const;
    // The ports of a node, in order: those it takes sound by, or those it gives it by (its monitors for a sink).
    std::vector<GraphPort> portsOf(std::uint32_t nodeId, bool inputs) const;
    // How many of the node's ports on that side are linked to anything.
    std::size_t linkedPortsOf(std::uint32_t nodeId, bool inputs) const;
    bool hasLink(std::uint32_t id) const { return mLinks.contains(id); }

    // Whether a session manager, which keeps the default devices, runs and has sent all of them.
    bool hasDefaults() const { return mDefaultMetadata && mDefaultsKnown; }
    QString defaultInForce(Direction direction) const;
    // Whether the session manager has decided where sound goes, even if it is nowhere for lack of devices.
    bool hasSettled() const;
    std::optional<QString> configuredDefault(Direction direction) const;
    // Nothing takes the choice away. False without a session manager.
    bool setConfiguredDefault(Direction direction, const std::optional<QString> &name);
    // While a client introduces itself to the session manager's metadata, the server passes no news of it to the
    // others. What was missed is heard by asking for everything again. True once after a client has come.
    bool takeNewcomer() { return std::exchange(mNewcomer, false); }
    void refreshDefaults();

    // False for a side without a loudness of its own, as that of a loopback which gives its sound back.
    bool setGains(const QString &name, Direction direction, const std::vector<float> &gains);
    bool setMuted(const QString &name, Direction direction, bool muted);

    double rate() const;
    std::uint32_t cycleFrames() const;
    // What a running stream has seen; 0 frames: nothing runs any more.
    void observe(double rate, std::uint32_t frames);

    // The links and nodes that a program makes are made of this.
    pw_core *core() const { return mCore; }
    pw_registry *registry() const { return reinterpret_cast<pw_registry *>(mRegistry.get()); }

private:
    struct BoundNode {
        PipeWireGraph *graph = nullptr;
        GraphNode node;
        ProxyHandle proxy;
        Hook objectHook;
    };

    void addGlobal(std::uint32_t id, const char *type, const spa_dict *props);
    void removeGlobal(std::uint32_t id);
    void addNode(std::uint32_t id, const spa_dict *props);
    void addPort(std::uint32_t id, const spa_dict *props);
    void addLink(std::uint32_t id, const spa_dict *props);
    void addMetadata(std::uint32_t id, const spa_dict *props);
    void bindDefaults();
    void describe(BoundNode &bound, const pw_node_info &info);
    void readProps(BoundNode &bound, const spa_pod *param);
    int readMetadata(bool isSettings, std::uint32_t subject, const char *key, const char *value);
    BoundNode *boundNamed(const QString &name);
    std::optional<DeviceRecord> recordOf(const GraphNode &node) const;

    static void onCoreDone(void *data, std::uint32_t id, int seq);
    static void onGlobal(void *data, std::uint32_t id, std::uint32_t permissions, const char *type,
                         std::uint32_t version, const spa_dict *props);
    static void onGlobalRemove(void *data, std::uint32_t id);
    static void onNodeInfo(void *data, const pw_node_info *info);
    static void onNodeParam(void *data, int seq, std::uint32_t id, std::uint32_t index, std::uint32_t next,
                            const spa_pod *param);
    static int onDefaultMetadata(void *data, std::uint32_t subject, const char *key, const char *type,
                                 const char *value);
    static int onSettingsMetadata(void *data, std::uint32_t subject, const char *key, const char *type,
                                  const char *value);

    pw_core *mCore;
    Hook mCoreHook;
    const QStringList mLoopbackNames;
    const std::function<void()> mChanged;
    // The server's answers still awaited before the default devices count as known. It answers the first after all
    // our earlier requests, the second after the requests that those answers caused.
    int mRoundsLeft = 0;
    int mAwaited = 0;
    bool mDefaultsKnown = false;
    bool mNewcomer = false;
    ProxyHandle mRegistry;
    Hook mRegistryHook;
    std::map<std::uint32_t, std::unique_ptr<BoundNode>> mNodes;
    std::map<std::uint32_t, GraphPort> mPorts;
    std::map<std::uint32_t, GraphLink> mLinks;
    ProxyHandle mDefaultMetadata;
    Hook mDefaultHook;
    std::uint32_t mDefaultMetadataId = 0;
    ProxyHandle mSettingsMetadata;
    Hook mSettingsHook;
    QHash<QString, QString> mDefaults; // metadata key to node name
    QHash<QString, QString> mListed;   // the same, while the server lists it again
    QHash<QString, double> mSettings;  // metadata key to number
    double mObservedRate = 0;
    std::uint32_t mObservedFrames = 0;
};

} // namespace cantorel::hal
