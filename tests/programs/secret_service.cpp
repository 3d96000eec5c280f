// Stands in for a person's keyring on a private message bus: as much of the Secret Service
// (specifications.freedesktop.org/secret-service) as libsecret needs to keep, find and remove one
// kind of item. Secrets live in this process's memory. Every call is told on standard output.
//   --locked    refuses everything that has to do with items

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>
#include <QMap>
#include <cstdio>

namespace {

using Attributes = QMap<QString, QString>;

struct Secret {
    QDBusObjectPath session;
    QByteArray parameters;
    QByteArray value;
    QString type;
};
using Secrets = QMap<QDBusObjectPath, Secret>;
using Paths = QList<QDBusObjectPath>;

QDBusArgument& operator<<(QDBusArgument& out, const Secret& secret) {
    out.beginStructure();
    out << secret.session << secret.parameters << secret.value << secret.type;
    out.endStructure();
    return out;
}

const QDBusArgument& operator>>(const QDBusArgument& in, Secret& secret) {
    in.beginStructure();
    in >> secret.session >> secret.parameters >> secret.value >> secret.type;
    in.endStructure();
    return in;
}

}  // namespace

Q_DECLARE_METATYPE(Secret)

namespace {

QVariant path(const QString& text) {
    return QVariant::fromValue(QDBusObjectPath(text));
}

/// "No question to the person is needed."
QVariant noPrompt() {
    return path(QStringLiteral("/"));
}

class Service : public QDBusVirtualObject {
public:
    explicit Service(bool locked) : locked_(locked) {}

    QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& call, const QDBusConnection& bus) override {
        std::printf("%s\n", qPrintable(call.member()));
        std::fflush(stdout);
        bus.send(answer(call));
        return true;
    }

private:
    struct Item {
        Attributes attributes;
        QByteArray value;
        QString type;
    };

    QDBusMessage answer(const QDBusMessage& call) {
        const QString member = call.member();
        if (member == QLatin1String("OpenSession")) return openSession(call);
        if (member == QLatin1String("GetAll"))
            return call.createReply(QVariant::fromValue(QVariantMap()));
        if (locked_)
            return call.createErrorReply(QStringLiteral("org.freedesktop.Secret.Error.IsLocked"),
                                         QStringLiteral("the keyring is locked"));
        if (member == QLatin1String("CreateItem")) return createItem(call);
        if (member == QLatin1String("SearchItems")) return searchItems(call);
        if (member == QLatin1String("GetSecrets")) return getSecrets(call);
        if (member == QLatin1String("Delete")) {
            items_.remove(call.path());
            return call.createReply(noPrompt());
        }
        if (member == QLatin1String("Unlock") || member == QLatin1String("Lock"))
            return call.createReply({call.arguments().at(0), noPrompt()});
        return call.createErrorReply(QDBusError::UnknownMethod, member);
    }

    static QDBusMessage openSession(const QDBusMessage& call) {
        // Only what travels as it is: the bus is private.
        if (call.arguments().at(0).toString() != QLatin1String("plain"))
            return call.createErrorReply(QDBusError::NotSupported, QStringLiteral("plain only"));
        return call.createReply({QVariant::fromValue(QDBusVariant(QString())),
                                 path(QStringLiteral("/org/freedesktop/secrets/session/1"))});
    }

    QDBusMessage createItem(const QDBusMessage& call) {
        const auto properties = qdbus_cast<QVariantMap>(call.arguments().at(0));
        const auto secret = qdbus_cast<Secret>(call.arguments().at(1));
        const auto attributes = qdbus_cast<Attributes>(
            properties.value(QStringLiteral("org.freedesktop.Secret.Item.Attributes")));
        QString place = find(attributes);
        if (place.isEmpty())
            place = QStringLiteral("/org/freedesktop/secrets/collection/c/%1").arg(++last_);
        items_[place] = {attributes, secret.value, secret.type};
        return call.createReply({path(place), noPrompt()});
    }

    QDBusMessage searchItems(const QDBusMessage& call) const {
        Paths found;
        const QString place = find(qdbus_cast<Attributes>(call.arguments().at(0)));
        if (!place.isEmpty()) found.append(QDBusObjectPath(place));
        return call.createReply({QVariant::fromValue(found), QVariant::fromValue(Paths())});
    }

    QDBusMessage getSecrets(const QDBusMessage& call) const {
        Secrets secrets;
        const auto session = call.arguments().at(1).value<QDBusObjectPath>();
        for (const QDBusObjectPath& place : qdbus_cast<Paths>(call.arguments().at(0))) {
            const Item item = items_.value(place.path());
            secrets[place] = {session, {}, item.value, item.type};
        }
        return call.createReply(QVariant::fromValue(secrets));
    }

    /// The item that has all these attributes.
    QString find(const Attributes& wanted) const {
        for (auto item = items_.begin(); item != items_.end(); ++item) {
            bool all = true;
            for (auto each = wanted.begin(); each != wanted.end(); ++each)
                all = all && item->attributes.value(each.key()) == each.value();
            if (all) return item.key();
        }
        return {};
    }

    bool locked_;
    int last_ = 0;
    QMap<QString, Item> items_;
};

}  // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    qDBusRegisterMetaType<Secret>();
    qDBusRegisterMetaType<Secrets>();
    qDBusRegisterMetaType<Attributes>();
    qDBusRegisterMetaType<Paths>();
    Service service(QCoreApplication::arguments().contains(QStringLiteral("--locked")));
    QDBusConnection bus = QDBusConnection::sessionBus();
    const QString root = QStringLiteral("/org/freedesktop/secrets");
    if (!bus.registerVirtualObject(root, &service, QDBusConnection::SubPath) ||
        !bus.registerService(QStringLiteral("org.freedesktop.secrets"))) {
        std::fprintf(stderr, "no bus\n");
        return 1;
    }
    std::printf("ready\n");
    std::fflush(stdout);
    return QCoreApplication::exec();
}
