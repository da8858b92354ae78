#include "platform/hal/pipewire/PipeWireGraph.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <spa/param/audio/format-utils.h>
#include <spa/param/props.h>
#include <spa/pod/builder.h>
#include <spa/pod/iter.h>
#include <spa/utils/string.h>

#include <algorithm>
#include <set>

namespace cantorel::hal {

namespace {

constexpr double kUsualRate = 48000;
constexpr std::uint32_t kUsualFrames = 512;
constexpr std::uint32_t kMaxGains = 64;
constexpr int kRounds = 2;
// The silent sink that the session manager offers to players while there is no output device.
constexpr const char *kNoDevice = "auto_null";

QString lookUp(const spa_dict *props, const char *key) {
    const char *value = props ? spa_dict_lookup(props, key) : nullptr;
    return value ? QString::fromUtf8(value) : QString();
}

bool isTrue(const spa_dict *props, const char *key) {
    const char *value = props ? spa_dict_lookup(props, key) : nullptr;
    return value && spa_atob(value);
}

QString defaultKey(Direction direction, bool configured) {
    return (configured ? QStringLiteral("default.configured.audio.") : QStringLiteral("default.audio."))
           + (direction == Direction::Input ? QStringLiteral("source") : QStringLiteral("sink"));
}

pw_metadata_events metadataEvents(decltype(pw_metadata_events::property) property) {
    pw_metadata_events events = {};
    events.version = PW_VERSION_METADATA_EVENTS;
    events.property = property;
    return events;
}

// Replaces what was bound before.
void bindMetadata(pw_registry *registry, std::uint32_t id, ProxyHandle &proxy, Hook &hook,
                  const pw_metadata_events &events, void *listener) {
    hook.remove();
    proxy.reset(
        static_cast<pw_proxy *>(pw_registry_bind(registry, id, PW_TYPE_INTERFACE_Metadata, PW_VERSION_METADATA, 0)));
    if (proxy)
        pw_metadata_add_listener(reinterpret_cast<pw_metadata *>(proxy.get()), &hook.hook, &events, listener);
}

} // namespace

PipeWireGraph::PipeWireGraph(pw_core *core, QStringList loopbackNames, std::function<void()> changed)
    : mCore(core), mLoopbackNames(std::move(loopbackNames)), mChanged(std::move(changed)) {
    static const pw_registry_events events = [] {
        pw_registry_events table = {};
        table.version = PW_VERSION_REGISTRY_EVENTS;
        table.global = onGlobal;
        table.global_remove = onGlobalRemove;
        return table;
    }();
    static const pw_core_events coreEvents = [] {
        pw_core_events table = {};
        table.version = PW_VERSION_CORE_EVENTS;
        table.done = onCoreDone;
        return table;
    }();
    pw_core_add_listener(core, &mCoreHook.hook, &coreEvents, this);
    mRegistry.reset(reinterpret_cast<pw_proxy *>(pw_core_get_registry(core, PW_VERSION_REGISTRY, 0)));
    pw_registry_add_listener(registry(), &mRegistryHook.hook, &events, this);
}

PipeWireGraph::~PipeWireGraph() {
    // Listeners go before what they listen to.
    mCoreHook.remove();
    mRegistryHook.remove();
    mDefaultHook.remove();
    mSettingsHook.remove();
    for (auto &[id, bound] : mNodes)
        bound->objectHook.remove();
}

void PipeWireGraph::onCoreDone(void *data, std::uint32_t id, int seq) {
    auto *self = static_cast<PipeWireGraph *>(data);
    if (id != PW_ID_CORE || seq != self->mAwaited || self->mRoundsLeft == 0)
        return;
    if (--self->mRoundsLeft > 0) {
        self->mAwaited = pw_core_sync(self->mCore, PW_ID_CORE, 0);
        return;
    }
    self->mDefaultsKnown = true;
    self->mDefaults = std::exchange(self->mListed, {});
    self->mChanged();
}

void PipeWireGraph::onGlobal(void *data, std::uint32_t id, std::uint32_t, const char *type, std::uint32_t,
                             const spa_dict *props) {
    static_cast<PipeWireGraph *>(data)->addGlobal(id, type, props);
}

void PipeWireGraph::onGlobalRemove(void *data, std::uint32_t id) {
    static_cast<PipeWireGraph *>(data)->removeGlobal(id);
}

void PipeWireGraph::addGlobal(std::uint32_t id, const char *type, const spa_dict *props) {
    if (spa_streq(type, PW_TYPE_INTERFACE_Node))
        addNode(id, props);
    else if (spa_streq(type, PW_TYPE_INTERFACE_Port))
        addPort(id, props);
    else if (spa_streq(type, PW_TYPE_INTERFACE_Link))
        addLink(id, props);
    else if (spa_streq(type, PW_TYPE_INTERFACE_Metadata))
        addMetadata(id, props);
    else if (spa_streq(type, PW_TYPE_INTERFACE_Client) && hasDefaults()) {
        mNewcomer = true;
        mChanged();
    }
}

void PipeWireGraph::removeGlobal(std::uint32_t id) {
    if (const auto bound = mNodes.find(id); bound != mNodes.end()) {
        bound->second->objectHook.remove();
        mNodes.erase(bound);
    } else if (id == mDefaultMetadataId && mDefaultMetadata) {
        mDefaultHook.remove();
        mDefaultMetadata.reset();
        mDefaults.clear();
        mRoundsLeft = 0;
        mDefaultsKnown = false;
    } else if (mLinks.erase(id) == 0 && mPorts.erase(id) == 0) {
        return;
    }
    mChanged();
}

void PipeWireGraph::addNode(std::uint32_t id, const spa_dict *props) {
    const QString mediaClass = lookUp(props, PW_KEY_MEDIA_CLASS);
    if (mediaClass != QStringLiteral("Audio/Sink") && !mediaClass.startsWith(QStringLiteral("Audio/Source")))
        return;
    if (lookUp(props, PW_KEY_NODE_NAME) == QLatin1String(kNoDevice))
        return;
    static const pw_node_events events = [] {
        pw_node_events table = {};
        table.version = PW_VERSION_NODE_EVENTS;
        table.info = onNodeInfo;
        table.param = onNodeParam;
        return table;
    }();
    auto bound = std::make_unique<BoundNode>();
    bound->graph = this;
    bound->node.id = id;
    bound->node.mediaClass = mediaClass;
    bound->proxy.reset(
        static_cast<pw_proxy *>(pw_registry_bind(registry(), id, PW_TYPE_INTERFACE_Node, PW_VERSION_NODE, 0)));
    if (!bound->proxy)
        return;
    auto *node = reinterpret_cast<pw_node *>(bound->proxy.get());
    pw_node_add_listener(node, &bound->objectHook.hook, &events, bound.get());
    std::uint32_t wanted[] = {SPA_PARAM_Props};
    pw_node_subscribe_params(node, wanted, 1);
    mNodes.emplace(id, std::move(bound));
}

void PipeWireGraph::addPort(std::uint32_t id, const spa_dict *props) {
    GraphPort port;
    port.id = id;
    port.nodeId = lookUp(props, PW_KEY_NODE_ID).toUInt();
    port.isInput = lookUp(props, PW_KEY_PORT_DIRECTION) == QStringLiteral("in");
    port.index = lookUp(props, PW_KEY_PORT_ID).toUInt();
    port.channel = lookUp(props, PW_KEY_AUDIO_CHANNEL);
    mPorts.insert_or_assign(id, port);
    mChanged();
}

void PipeWireGraph::addLink(std::uint32_t id, const spa_dict *props) {
    const auto number = [props](const char *key) { return lookUp(props, key).toUInt(); };
    mLinks[id] = {number(PW_KEY_LINK_OUTPUT_NODE), number(PW_KEY_LINK_OUTPUT_PORT), number(PW_KEY_LINK_INPUT_NODE),
                  number(PW_KEY_LINK_INPUT_PORT)};
}

void PipeWireGraph::addMetadata(std::uint32_t id, const spa_dict *props) {
    const QString name = lookUp(props, PW_KEY_METADATA_NAME);
    if (name == QStringLiteral("default")) {
        mDefaultMetadataId = id;
        mDefaultsKnown = false;
        bindDefaults();
    } else if (name == QStringLiteral("settings")) {
        static const pw_metadata_events events = metadataEvents(onSettingsMetadata);
        bindMetadata(registry(), id, mSettingsMetadata, mSettingsHook, events, this);
    }
}

void PipeWireGraph::bindDefaults() {
    static const pw_metadata_events events = metadataEvents(onDefaultMetadata);
    mListed.clear();
    bindMetadata(registry(), mDefaultMetadataId, mDefaultMetadata, mDefaultHook, events, this);
    mRoundsLeft = kRounds;
    mAwaited = pw_core_sync(mCore, PW_ID_CORE, 0);
}

void PipeWireGraph::refreshDefaults() {
    if (hasDefaults() && mRoundsLeft == 0)
        bindDefaults();
}

int PipeWireGraph::onDefaultMetadata(void *data, std::uint32_t subject, const char *key, const char *,
                                     const char *value) {
    return static_cast<PipeWireGraph *>(data)->readMetadata(false, subject, key, value);
}

int PipeWireGraph::onSettingsMetadata(void *data, std::uint32_t subject, const char *key, const char *,
                                      const char *value) {
    return static_cast<PipeWireGraph *>(data)->readMetadata(true, subject, key, value);
}

int PipeWireGraph::readMetadata(bool isSettings, std::uint32_t subject, const char *key, const char *value) {
    if (subject != 0)
        return 0;
    const QString name = QString::fromUtf8(key ? key : "");
    if (isSettings) {
        mSettings.insert(name, value ? QByteArray(value).toDouble() : 0);
        mChanged();
        return 0;
    }
    const QJsonObject object = QJsonDocument::fromJson(QByteArray(value ? value : "")).object();
    for (QHash<QString, QString> *known : {&mDefaults, &mListed}) {
        if (!key)
            known->clear();
        else if (!value)
            known->remove(name);
        else
            known->insert(name, object.value(QStringLiteral("name")).toString());
    }
    mChanged();
    return 0;
}

void PipeWireGraph::onNodeInfo(void *data, const pw_node_info *info) {
    auto *bound = static_cast<BoundNode *>(data);
    bound->graph->describe(*bound, *info);
}

void PipeWireGraph::describe(BoundNode &bound, const pw_node_info &info) {
    // An update brings an empty list when the properties are not what changed.
    if (!info.props || !(info.change_mask & PW_NODE_CHANGE_MASK_PROPS))
        return;
    GraphNode &node = bound.node;
    node.name = lookUp(info.props, PW_KEY_NODE_NAME);
    node.description = lookUp(info.props, PW_KEY_NODE_DESCRIPTION);
    if (node.description.isEmpty())
        node.description = lookUp(info.props, PW_KEY_NODE_NICK);
    node.isLoopback = node.isSink()
                      && (isTrue(info.props, "cantorel.loopback") || mLoopbackNames.contains(node.description)
                          || mLoopbackNames.contains(node.name));
    mChanged();
}

void PipeWireGraph::onNodeParam(void *data, int, std::uint32_t id, std::uint32_t, std::uint32_t, const spa_pod *param) {
    auto *bound = static_cast<BoundNode *>(data);
    if (id == SPA_PARAM_Props && param && spa_pod_is_object(param))
        bound->graph->readProps(*bound, param);
}

void PipeWireGraph::readProps(BoundNode &bound, const spa_pod *param) {
    GraphNode &node = bound.node;
    const auto *object = reinterpret_cast<const spa_pod_object *>(param);
    if (const spa_pod_prop *prop = spa_pod_object_find_prop(object, nullptr, SPA_PROP_channelVolumes)) {
        float gains[kMaxGains];
        const std::uint32_t count = spa_pod_copy_array(&prop->value, SPA_TYPE_Float, gains, kMaxGains);
        node.gains.assign(gains, gains + count);
    }
    if (const spa_pod_prop *prop = spa_pod_object_find_prop(object, nullptr, SPA_PROP_mute)) {
        bool muted = false;
        node.hasMute = spa_pod_get_bool(&prop->value, &muted) == 0;
        node.muted = muted;
    }
    mChanged();
}

PipeWireGraph::BoundNode *PipeWireGraph::boundNamed(const QString &name) {
    for (const auto &[id, bound] : mNodes) {
        if (!name.isEmpty() && bound->node.name == name)
            return bound.get();
    }
    return nullptr;
}

const GraphNode *PipeWireGraph::nodeNamed(const QString &name) const {
    const BoundNode *bound = const_cast<PipeWireGraph *>(this)->boundNamed(name);
    return bound ? &bound->node : nullptr;
}

const GraphNode *PipeWireGraph::nodeBehind(const QString &uid) const {
    return nodeNamed(uid == QLatin1String(kOutputMonitorUid) ? defaultInForce(Direction::Output) : uid);
}

std::vector<GraphPort> PipeWireGraph::portsOf(std::uint32_t nodeId, bool inputs) const {
    std::vector<GraphPort> ports;
    for (const auto &[id, port] : mPorts) {
        if (port.nodeId == nodeId && port.isInput == inputs)
            ports.push_back(port);
    }
    std::sort(ports.begin(), ports.end(), [](const auto &a, const auto &b) { return a.index < b.index; });
    return ports;
}

std::size_t PipeWireGraph::linkedPortsOf(std::uint32_t nodeId, bool inputs) const {
    std::set<std::uint32_t> ports;
    for (const auto &[id, link] : mLinks) {
        if ((inputs ? link.inputNode : link.outputNode) == nodeId)
            ports.insert(inputs ? link.inputPort : link.outputPort);
    }
    return ports.size();
}

std::optional<DeviceRecord> PipeWireGraph::recordOf(const GraphNode &node) const {
    // A device whose ports are not made yet is about to appear.
    const auto channels = static_cast<int>(portsOf(node.id, node.isSink()).size());
    if (node.name.isEmpty() || channels == 0)
        return std::nullopt;
    DeviceRecord record;
    record.uid = node.name;
    record.name = node.description.isEmpty() ? node.name : node.description;
    record.sampleRate = rate();
    record.cycleFrames = cycleFrames();
    record.isLoopback = node.isLoopback;
    DeviceSide side;
    side.channels = channels;
    side.gains = node.gains;
    side.canMute = node.hasMute;
    side.muted = node.muted;
    (node.isSink() ? record.output : record.input) = side;
    if (node.isLoopback)
        record.input.channels = channels;
    return record;
}

std::vector<DeviceRecord> PipeWireGraph::devices() const {
    std::vector<DeviceRecord> records;
    for (const auto &[id, bound] : mNodes) {
        auto record = recordOf(bound->node);
        const auto sameUid = [&](const DeviceRecord &other) { return other.uid == record->uid; };
        if (record && std::none_of(records.begin(), records.end(), sameUid))
            records.push_back(*record);
    }
    std::sort(records.begin(), records.end(), [](const auto &a, const auto &b) { return a.uid < b.uid; });
    return records;
}

QString PipeWireGraph::defaultInForce(Direction direction) const {
    const GraphNode *node = nodeNamed(mDefaults.value(defaultKey(direction, false)));
    // Without a microphone the session manager names a sink's monitor, which is no input of anybody's.
    const bool fits = node && (direction == Direction::Input ? node->isSource() : node->isSink());
    return fits ? node->name : QString();
}

bool PipeWireGraph::hasSettled() const { return mDefaults.contains(defaultKey(Direction::Output, false)); }

std::optional<QString> PipeWireGraph::configuredDefault(Direction direction) const {
    const auto found = mDefaults.constFind(defaultKey(direction, true));
    return found == mDefaults.constEnd() ? std::nullopt : std::optional(*found);
}

bool PipeWireGraph::setConfiguredDefault(Direction direction, const std::optional<QString> &name) {
    if (!hasDefaults())
        return false;
    auto *metadata = reinterpret_cast<pw_metadata *>(mDefaultMetadata.get());
    const QByteArray key = defaultKey(direction, true).toLatin1();
    if (!name)
        return pw_metadata_set_property(metadata, 0, key.constData(), nullptr, nullptr) >= 0;
    const QByteArray value = QJsonDocument(QJsonObject{{QStringLiteral("name"), *name}}).toJson(QJsonDocument::Compact);
    return pw_metadata_set_property(metadata, 0, key.constData(), "Spa:String:JSON", value.constData()) >= 0;
}

bool PipeWireGraph::setGains(const QString &name, Direction direction, const std::vector<float> &gains) {
    BoundNode *bound = boundNamed(name);
    if (!bound || bound->node.direction() != direction || gains.empty() || gains.size() > kMaxGains)
        return false;
    std::uint8_t room[1024];
    spa_pod_builder builder = SPA_POD_BUILDER_INIT(room, sizeof room);
    const auto *param = static_cast<const spa_pod *>(spa_pod_builder_add_object(
        &builder, SPA_TYPE_OBJECT_Props, SPA_PARAM_Props, SPA_PROP_channelVolumes,
        SPA_POD_Array(sizeof(float), SPA_TYPE_Float, static_cast<std::uint32_t>(gains.size()), gains.data())));
    if (pw_node_set_param(reinterpret_cast<pw_node *>(bound->proxy.get()), SPA_PARAM_Props, 0, param) < 0)
        return false;
    bound->node.gains = gains; // What the server will announce in a moment.
    return true;
}

bool PipeWireGraph::setMuted(const QString &name, Direction direction, bool muted) {
    BoundNode *bound = boundNamed(name);
    if (!bound || bound->node.direction() != direction || !bound->node.hasMute)
        return false;
    std::uint8_t room[256];
    spa_pod_builder builder = SPA_POD_BUILDER_INIT(room, sizeof room);
    const auto *param = static_cast<const spa_pod *>(spa_pod_builder_add_object(
        &builder, SPA_TYPE_OBJECT_Props, SPA_PARAM_Props, SPA_PROP_mute, SPA_POD_Bool(muted)));
    if (pw_node_set_param(reinterpret_cast<pw_node *>(bound->proxy.get()), SPA_PARAM_Props, 0, param) < 0)
        return false;
    bound->node.muted = muted;
    return true;
}

double PipeWireGraph::rate() const {
    if (mObservedRate > 0)
        return mObservedRate;
    for (const char *key : {"clock.force-rate", "clock.rate"}) {
        if (const double rate = mSettings.value(QLatin1String(key)); rate > 0)
            return rate;
    }
    return kUsualRate;
}

std::uint32_t PipeWireGraph::cycleFrames() const {
    if (mObservedFrames > 0)
        return mObservedFrames;
    const auto setting = [this](const char *key) {
        return static_cast<std::uint32_t>(std::clamp(mSettings.value(QLatin1String(key)), 0.0, 8192.0));
    };
    if (const std::uint32_t forced = setting("clock.force-quantum"); forced > 0)
        return forced;
    return std::max(kUsualFrames, setting("clock.min-quantum"));
}

void PipeWireGraph::observe(double rate, std::uint32_t frames) {
    mObservedRate = rate;
    mObservedFrames = frames;
}

} // namespace cantorel::hal
