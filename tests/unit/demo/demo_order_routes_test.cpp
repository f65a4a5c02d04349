#include <gtest/gtest.h>

#include "demo/order_routes.h"
#include "demo/trial_routes.h"

namespace juniva {
namespace {

class DemoOrderRoutes : public testing::Test {
 protected:
  Response get(const std::string& path, const std::string& query = {}) {
    return mRoutes.answer({.method = "GET", .path = path, .query = query});
  }
  Response post(const std::string& path, const std::string& body) {
    return mRoutes.answer(
        {.method = "POST", .path = path, .contentType = "application/x-www-form-urlencoded", .body = body});
  }
  static bool has(const Response& response, std::string_view text) {
    return response.body.find(text) != std::string::npos;
  }
  std::string placeOrder() {
    return std::string(headerValue(
        post("/registrationorders/confirmation", "p2=2&name=Zo%C3%AB+B&email=z%40a.de"), "Location"));
  }

  int mTickets = 0;
  Shop mShop{.pages = OrderPages(false),
             .localTime = [] { return "21.11.2026 09:30"; },
             .newTicket = [this] { return "ticket-" + std::to_string(++mTickets); }};
  RouteTable mRoutes = makeOrderRoutes(mShop);
};

TEST_F(DemoOrderRoutes, RootLeadsToTheOrder) {
  const Response response = get("/");
  EXPECT_EQ(response.status, 302);
  EXPECT_EQ(headerValue(response, "Location"), "/registrationorders");
}

TEST_F(DemoOrderRoutes, PagesAreThereAndNotStored) {
  for (const std::string path :
       {"/registrationorders", "/registrationorders/photos", "/registration/save", "/goodbye"}) {
    const Response response = get(path);
    EXPECT_EQ(response.status, 200) << path;
    EXPECT_EQ(headerValue(response, "Cache-Control"), "no-store") << path;
    EXPECT_TRUE(has(response, "</html>")) << path;
    EXPECT_FALSE(has(response, "{{")) << path;
  }
}

TEST_F(DemoOrderRoutes, PhotosWorkWithoutAScript) {
  const Response response = get("/registrationorders/photos", "p1=1&p2=0&plus=2");
  EXPECT_TRUE(has(response, "name=\"p1\" value=\"1\""));
  EXPECT_TRUE(has(response, "name=\"p2\" value=\"1\""));
  EXPECT_TRUE(has(response, "€5.80"));
  EXPECT_EQ(get("/registrationorders/photos", "p1=x").status, 400);
  EXPECT_EQ(get("/registrationorders/photos", "plus=77").status, 400);
}

TEST_F(DemoOrderRoutes, DetailsNeedAPicture) {
  EXPECT_EQ(get("/registrationorders/details").status, 422);
  const Response response = get("/registrationorders/details", "p1=1");
  EXPECT_EQ(response.status, 200);
  EXPECT_TRUE(has(response, "<input id=\"customer-name\""));
}

TEST_F(DemoOrderRoutes, ReviewSendsBackWhatIsNotRight) {
  const Response wrong = post("/registrationorders/review", "p1=1&name=%3Cb%3E&email=x");
  EXPECT_EQ(wrong.status, 422);
  EXPECT_TRUE(has(wrong, "value=\"&lt;b&gt;\""));
  EXPECT_TRUE(has(wrong, "has-problem"));
  const Response right = post("/registrationorders/review", "p1=1&p2=2&name=Clara&email=c%40a.de");
  EXPECT_EQ(right.status, 200);
  EXPECT_TRUE(has(right, "€8.70"));
  EXPECT_TRUE(has(right, "value=\"ticket-1\""));
}

TEST_F(DemoOrderRoutes, MalformedFormsAreRefused) {
  for (const std::string path : {"details", "review", "confirmation"}) {
    for (const std::string body : {"%zz", "p1=-1", "name=%ff"}) {
      EXPECT_EQ(post("/registrationorders/" + path, body).status, 400) << path << " " << body;
    }
  }
}

TEST_F(DemoOrderRoutes, AnOrderIsPlacedOnceForATicket) {
  const std::string body = "p1=1&name=Clara&email=c%40a.de&ticket=t";
  const Response first = post("/registrationorders/confirmation", body);
  EXPECT_EQ(first.status, 303);
  EXPECT_EQ(headerValue(first, "Location"), "/registrationorders/confirmation?code=A-1042");
  EXPECT_EQ(headerValue(post("/registrationorders/confirmation", body), "Location"),
            headerValue(first, "Location"));
  EXPECT_EQ(mShop.orders.size(), 1u);
  const Response shown = get("/registrationorders/confirmation", "code=A-1042");
  EXPECT_TRUE(has(shown, "A-1042"));
  EXPECT_TRUE(has(shown, "/registrationorders/receipt?code=A-1042"));
}

TEST_F(DemoOrderRoutes, TheStationIsToldInHeaders) {
  placeOrder();
  const Response response = get("/registrationorders/photostationdata", "code=A-1042");
  EXPECT_EQ(response.status, 200);
  EXPECT_EQ(headerValue(response, "lumo-reg-code"), "A-1042");
  EXPECT_EQ(headerValue(response, "lumo-reg-name"), "Zoë B");
  EXPECT_EQ(headerValue(response, "lumo-reg-ordertext"), "2+x+Clara+13+×+18+cm,+total+€5.80");
}

TEST_F(DemoOrderRoutes, EveryReleasePathTellsTheStationByLinkAndByForm) {
  for (const std::string_view path : kReleasePaths) {
    for (const Response& response :
         {get(std::string(path), "code=DEMO-1"), post(std::string(path), "code=DEMO-1")}) {
      EXPECT_EQ(response.status, 200) << path;
      EXPECT_EQ(headerValue(response, "lumo-reg-code"), "DEMO-1") << path;
      EXPECT_EQ(headerValue(response, "lumo-reg-name"), "Zoë Müller-Ørsted") << path;
      EXPECT_NE(headerValue(response, "lumo-reg-ordertext").find('+'), std::string_view::npos) << path;
    }
    EXPECT_EQ(get(std::string(path)).status, 400) << path;
  }
  EXPECT_EQ(headerValue(get("/try/released"), "Location"),
            "/registrationorders/photostationdata?code=DEMO-1");
}

TEST_F(DemoOrderRoutes, TheTrialPageLeadsToPagesThatExist) {
  const std::string trial = get("/try").body;
  EXPECT_EQ(trial.find("{{"), std::string::npos);
  std::size_t links = 0;
  for (std::size_t at = trial.find("href=\"/"); at != std::string::npos;
       at = trial.find("href=\"/", at + 1)) {
    const std::string link = trial.substr(at + 6, trial.find('"', at + 6) - at - 6);
    if (link == "/nothing/here") continue;
    const std::size_t mark = link.find('?');
    const Response response =
        get(link.substr(0, mark), mark == std::string::npos ? std::string() : link.substr(mark + 1));
    EXPECT_LT(response.status, 400) << link;
    ++links;
  }
  EXPECT_GE(links, 12u);
}

TEST_F(DemoOrderRoutes, TheScannerIsStartedAndClosedByHeaders) {
  EXPECT_EQ(headerValue(get("/try/scan"), "Glimmerpad-Plus-Scanner"), "start");
  EXPECT_EQ(headerValue(get("/try/scan"), "Scan-Return"), "registrationorders");
  EXPECT_EQ(headerValue(get("/try/close"), "Glimmerpad-Plus-Scanner"), "close");
}

TEST_F(DemoOrderRoutes, TheLoginHasAFieldAndLeadsOn) {
  EXPECT_TRUE(has(get("/login"), "<input id=\"login-code\""));
  EXPECT_EQ(headerValue(post("/login", "code=x"), "Location"), "/registrationorders");
}

TEST_F(DemoOrderRoutes, AReceiptIsMarkedForPrinting) {
  placeOrder();
  const Response response = get("/registrationorders/receipt", "code=A-1042");
  EXPECT_EQ(response.status, 200);
  EXPECT_EQ(headerValue(response, "Glimmerpad-Plus-Print"), "Receipt");
  EXPECT_EQ(headerValue(response, "Scan-Return"), "registrationorders");
  EXPECT_TRUE(has(response, "21.11.2026 09:30"));
}

TEST_F(DemoOrderRoutes, UnknownOrdersGiveNoHeaders) {
  for (const std::string path : {"confirmation", "receipt", "photostationdata"}) {
    EXPECT_EQ(get("/registrationorders/" + path).status, 400) << path;
    const Response response = get("/registrationorders/" + path, "code=%3CZ-1%3E");
    EXPECT_EQ(response.status, 404) << path;
    EXPECT_TRUE(has(response, "&lt;Z-1&gt;"));
    EXPECT_EQ(headerValue(response, "Glimmerpad-Plus-Print"), "");
    EXPECT_EQ(headerValue(response, "lumo-reg-code"), "");
  }
}

TEST_F(DemoOrderRoutes, TheCacheablePageCounts) {
  const Response first = get("/registrationorders/cacheable");
  EXPECT_EQ(headerValue(first, "Cache-Control"), "max-age=3600");
  EXPECT_TRUE(has(first, "Served 1 time<"));
  mRoutes.answer({.method = "HEAD", .path = "/registrationorders/cacheable"});
  EXPECT_TRUE(has(get("/registrationorders/cacheable"), "Served 2 times<"));
}

TEST_F(DemoOrderRoutes, SlownessHasBounds) {
  const struct {
    std::string query;
    int status;
    int seconds;
  } rows[] = {{"", 200, 5},
              {"seconds=0", 200, 0},
              {"seconds=7", 200, 7},
              {"seconds=30", 200, 30},
              {"seconds=31", 200, 30},
              {"seconds=x", 400, 0},
              {"seconds=-1", 400, 0}};
  for (const auto& row : rows) {
    const Response response = get("/registrationorders/slow", row.query);
    EXPECT_EQ(response.status, row.status) << row.query;
    EXPECT_EQ(response.delay.count(), row.seconds) << row.query;
    EXPECT_FALSE(response.silent);
  }
  const Response silent = get("/registrationorders/silent");
  EXPECT_TRUE(silent.silent);
  EXPECT_LE(silent.delay.count(), 60);
}

TEST_F(DemoOrderRoutes, ErrorsEscapeWhatCameIn) {
  const Response missing = get("/<script>alert(1)</script>");
  EXPECT_EQ(missing.status, 404);
  EXPECT_TRUE(has(missing, "&lt;script&gt;alert(1)&lt;/script&gt;"));
  EXPECT_FALSE(has(missing, "<script>alert"));
  const Response wrong = mRoutes.answer({.method = "<b>", .path = "/registrationorders"});
  EXPECT_EQ(wrong.status, 405);
  EXPECT_EQ(headerValue(wrong, "Allow"), "GET, HEAD");
  EXPECT_FALSE(has(wrong, "<b> /"));
  EXPECT_EQ(bodyTooLarge(mShop).status, 413);
}

TEST_F(DemoOrderRoutes, OnlyAnActingShopHasTheActingScript) {
  EXPECT_FALSE(has(get("/registrationorders"), "start-order'"));
  mShop.pages = OrderPages(true);
  EXPECT_TRUE(has(get("/registrationorders"), "start-order'"));
}

}  // namespace
}  // namespace juniva
