// A service whose certificate nobody signed: the line is refused, nothing is sent.

#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslServer>
#include <QSslSocket>
#include <memory>

#include "sources/apple_tv.h"
#include "sources/http_session.h"
#include "sources/itunes.h"
#include "sources/source_stub.h"

namespace marlet {
namespace {

template <typename T, void (*release)(T*)>
struct Releases {
    void operator()(T* held) const { release(held); }
};
using Key = std::unique_ptr<EVP_PKEY, Releases<EVP_PKEY, EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, Releases<X509, X509_free>>;

struct Memory {
    BIO* bio = BIO_new(BIO_s_mem());
    Memory() = default;
    ~Memory() { BIO_free(bio); }
    Memory(const Memory&) = delete;
    Memory& operator=(const Memory&) = delete;
    QByteArray content() const {
        char* data = nullptr;
        const long size = BIO_get_mem_data(bio, &data);
        return {data, static_cast<qsizetype>(size)};
    }
};

/// For 127.0.0.1, signed by itself, good for a day.
Certificate selfSigned(EVP_PKEY* key) {
    Certificate made(X509_new());
    ASN1_INTEGER_set(X509_get_serialNumber(made.get()), 1);
    X509_gmtime_adj(X509_getm_notBefore(made.get()), -3600);
    X509_gmtime_adj(X509_getm_notAfter(made.get()), 86400);
    X509_set_pubkey(made.get(), key);
    X509_NAME* name = X509_get_subject_name(made.get());
    const auto* host = reinterpret_cast<const unsigned char*>("127.0.0.1");
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, host, -1, -1, 0);
    X509_set_issuer_name(made.get(), name);
    X509_sign(made.get(), key, EVP_sha256());
    return made;
}

/// Speaks TLS on loopback and counts who got through to it.
class Impostor {
public:
    Impostor() {
        const Key key(EVP_EC_gen("P-256"));
        const Certificate certificate = selfSigned(key.get());
        const Memory keyText;
        const Memory certificateText;
        PEM_write_bio_PrivateKey(keyText.bio, key.get(), nullptr, nullptr, 0, nullptr, nullptr);
        PEM_write_bio_X509(certificateText.bio, certificate.get());
        QSslConfiguration setup = QSslConfiguration::defaultConfiguration();
        setup.setPrivateKey(QSslKey(keyText.content(), QSsl::Ec));
        setup.setLocalCertificate(QSslCertificate(certificateText.content()));
        setup.setPeerVerifyMode(QSslSocket::VerifyNone);
        server_.setSslConfiguration(setup);
        QObject::connect(&server_, &QTcpServer::newConnection, &server_, [this] {
            while (QTcpSocket* const visitor = server_.nextPendingConnection())
                QObject::connect(visitor, &QTcpSocket::readyRead, visitor,
                                 [this, visitor] { heard_ += visitor->readAll(); });
        });
        server_.listen(QHostAddress::LocalHost);
    }
    std::string root() const { return "https://127.0.0.1:" + std::to_string(server_.serverPort()); }
    std::string heard() const { return heard_.toStdString(); }

private:
    QSslServer server_;
    QByteArray heard_;
};

class UntrustedHost : public testing::Test {
protected:
    void SetUp() override {
        if (!QSslSocket::supportsSsl()) GTEST_SKIP() << "Qt has no TLS here";
        impostor = std::make_unique<Impostor>();
    }
    test::SourceStub stub;
    std::unique_ptr<Impostor> impostor;
};

TEST_F(UntrustedHost, IsATransportErrorAndHearsNoRequest) {
    HttpSession session;
    HttpRequest request;
    request.url = impostor->root() + "/3/movie/1";
    request.headers = {{"Authorization", "Bearer secret-7"}};
    EXPECT_THROW(Async::wait(session.get(request, HttpSession::Use::IgnoreCache, {})),
                 TransportError);
    EXPECT_EQ(impostor->heard(), "");
}

TEST_F(UntrustedHost, IsAFailureOfTheSourceThatHearsNoRequest) {
    const test::ScopedEnv apple("MARLET_APPLE_TV_API", impostor->root() + "/uts/v3/");
    const test::ScopedEnv itunes("MARLET_ITUNES_API", impostor->root() + "/");
    AppleTVSource appleTV;
    ITunesSource store;
    EXPECT_THROW(Async::wait(appleTV.searchMovies("Heat", {})), TransportError);
    EXPECT_THROW(Async::wait(store.searchMovies("Heat", {})), TransportError);
    EXPECT_EQ(impostor->heard(), "");
}

}  // namespace
}  // namespace marlet
