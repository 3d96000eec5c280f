#include "foundation/digest.h"

#include <openssl/evp.h>

#include <array>
#include <stdexcept>

namespace marlet {

struct Sha256::Context {
    EVP_MD_CTX* evp = EVP_MD_CTX_new();

    Context() {
        if (evp == nullptr || EVP_DigestInit_ex(evp, EVP_sha256(), nullptr) != 1) {
            EVP_MD_CTX_free(evp);
            throw std::runtime_error("no SHA-256 in libcrypto");
        }
    }
    ~Context() { EVP_MD_CTX_free(evp); }
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;
};

Sha256::Sha256() : context_(std::make_unique<Context>()) {}
Sha256::~Sha256() = default;
Sha256::Sha256(Sha256&&) noexcept = default;
Sha256& Sha256::operator=(Sha256&&) noexcept = default;

void Sha256::update(ByteView bytes) {
    if (EVP_DigestUpdate(context_->evp, bytes.data(), bytes.size()) != 1)
        throw std::runtime_error("SHA-256 failed");
}

std::string Sha256::hex() {
    std::array<std::uint8_t, 32> digest{};
    if (EVP_DigestFinal_ex(context_->evp, digest.data(), nullptr) != 1)
        throw std::runtime_error("SHA-256 failed");
    return toHex(digest);
}

std::array<std::uint8_t, 32> Sha256::restart() {
    std::array<std::uint8_t, 32> digest{};
    if (EVP_DigestFinal_ex(context_->evp, digest.data(), nullptr) != 1 ||
        EVP_DigestInit_ex(context_->evp, nullptr, nullptr) != 1)
        throw std::runtime_error("SHA-256 failed");
    return digest;
}

std::string sha256Hex(ByteView bytes) {
    Sha256 digest;
    digest.update(bytes);
    return digest.hex();
}

}  // namespace marlet
