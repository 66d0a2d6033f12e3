// labels: threads
// pkg: cpp-httplib
// HTTPS with a CA and a server certificate made by openssl for the test: trusted through the
// request's CA file, refused without it or with another CA, and no step down to HTTP on redirect.

#include <Cordel/Network/Http.h>
#include <Cordel/Network/URLEncode.h>

#include "HttpTestServer.h"
#include "TempFolder.h"

using namespace Cordel;
using namespace Cordel::Network;
using namespace HttpTest;

namespace {

class Https : public CordelTest::TempFolder {
protected:
    void SetUp() override
    {
        TempFolder::SetUp();
        ClearProxyEnvironment();
        ASSERT_TRUE(Certificates::Make(folder.string(), certificates)) << "openssl failed; see " << PathOf("openssl.log");
        server = std::make_unique<Server>(certificates.serverCertificate, certificates.serverKey);
    }
    void TearDown() override
    {
        server.reset();
        TempFolder::TearDown();
    }

    static std::string redirectTo(std::string const& url) { return "/to?url=" + std::string(URLEncode(url.c_str()).c_str()); }

    HttpResult run(std::string const& url, std::string const& caFile)
    {
        HttpRequest r;
        r.url = url.c_str();
        r.caFile = caFile.c_str();
        HttpTransfer t = http.Start(r);
        EXPECT_TRUE(t.Wait(30000));
        return t.GetResult();
    }

    Certificates certificates;
    std::unique_ptr<Server> server;
    Http http{"https"};
};

TEST_F(Https, TrustedThroughTheCAFile)
{
    HttpResult const r = run(server->URL("/hello"), certificates.caFile);
    ASSERT_EQ(r.outcome, HttpResult::Completed) << r.reason.c_str();
    EXPECT_EQ(r.response.body, "hello world");
}

TEST_F(Https, AnUntrustedCertificateIsRefused)
{
    for (std::string const& ca : {std::string(), certificates.otherCaFile}) {
        int const before = server->requests;
        HttpResult const r = run(server->URL("/hello"), ca);
        EXPECT_EQ(r.outcome, HttpResult::Failed);
        EXPECT_NE(std::string(r.reason.c_str()).find("certificate"), std::string::npos) << r.reason.c_str();
        EXPECT_EQ(server->requests, before);
    }
}

TEST_F(Https, ARedirectToHTTPIsRefusedBeforeTheRequestGoesOut)
{
    Server plain;
    HttpResult const r = run(server->URL(redirectTo(plain.URL("/hello"))), certificates.caFile);
    EXPECT_EQ(r.outcome, HttpResult::Failed);
    EXPECT_EQ(r.reason, String(("refused a redirect from HTTPS to HTTP (" + plain.URL("/hello") + ")").c_str()));
    EXPECT_EQ(plain.requests, 0);

    // Through a plain hop first: HTTP to HTTPS is fine, back to HTTP is not.
    std::string const backToPlain = server->URL(redirectTo(plain.URL("/hello")));
    HttpResult const chain = run(plain.URL(redirectTo(backToPlain)), certificates.caFile);
    EXPECT_EQ(chain.outcome, HttpResult::Failed);
    EXPECT_EQ(plain.requests, 1);

    HttpResult const upgrade = run(plain.URL(redirectTo(server->URL("/hello"))), certificates.caFile);
    EXPECT_EQ(upgrade.outcome, HttpResult::Completed) << upgrade.reason.c_str();
    EXPECT_EQ(upgrade.response.body, "hello world");
}

} // namespace
