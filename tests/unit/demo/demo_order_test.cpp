#include <gtest/gtest.h>

#include "demo/order.h"
#include "demo/order_book.h"

namespace juniva {
namespace {

Selection selectionOf(std::string_view query) {
  return Selection::fromForm(FormData::parse(query).value()).value();
}

TEST(DemoCatalogue, HasNinePhotosInOrder) {
  int id = 0;
  for (const Photo& photo : catalogue()) {
    EXPECT_EQ(photo.id, ++id);
    EXPECT_GT(photo.price, 0);
    const std::string picture = photo.artwork();
    EXPECT_EQ(picture.rfind("<svg ", 0), 0u);
    EXPECT_EQ(picture.substr(picture.size() - 6), "</svg>");
    EXPECT_EQ(picture.find("nan"), std::string::npos);
    EXPECT_EQ(picture, photo.artwork());
  }
  EXPECT_EQ(id, kPhotoCount);
}

TEST(DemoPrice, IsWrittenWithTwoDecimals) {
  EXPECT_EQ(formatPrice(0), "€0.00");
  EXPECT_EQ(formatPrice(5), "€0.05");
  EXPECT_EQ(formatPrice(290), "€2.90");
  EXPECT_EQ(formatPrice(123456), "€1234.56");
  EXPECT_EQ(formatPrice(-105), "−€1.05");
}

TEST(DemoSelection, SumsUpPrices) {
  EXPECT_EQ(Selection().totalPrice(), 0);
  EXPECT_TRUE(Selection().isEmpty());
  const Selection selection = selectionOf("p1=2&p3=1&p8=3");
  EXPECT_EQ(selection.totalCopies(), 6);
  EXPECT_EQ(selection.linePrice(catalogue()[7]), 3 * 1190);
  EXPECT_EQ(selection.totalPrice(), 2 * 290 + 690 + 3 * 1190);
  Cents all = 0;
  for (const Photo& photo : catalogue()) all += 99 * photo.price;
  EXPECT_EQ(selectionOf("p1=99&p2=99&p3=99&p4=99&p5=99&p6=99&p7=99&p8=99&p9=99").totalPrice(), all);
}

TEST(DemoSelection, TravelsThroughAQuery) {
  EXPECT_EQ(selectionOf("p9=1&p1=2&p4=0&p5=&other=x").toQuery(), "p1=2&p9=1");
  EXPECT_EQ(Selection().toQuery(), "");
}

TEST(DemoSelection, RefusesWhatIsNoCount) {
  for (const std::string_view wrong : {"p1=-1", "p1=100", "p2=x", "p9=1.5", "p3=+1"}) {
    EXPECT_FALSE(Selection::fromForm(FormData::parse(wrong).value())) << wrong;
  }
}

TEST(DemoSelection, FollowsThePressedButton) {
  const struct {
    std::string_view form;
    bool accepted;
    std::string_view query;
  } rows[] = {
      {"p1=1&plus=1", true, "p1=2"},    {"p1=1&plus=2", true, "p1=1&p2=1"},
      {"p1=1&minus=1", true, ""},       {"p1=0&minus=1", true, ""},
      {"p1=99&plus=1", true, "p1=99"},  {"p1=3&toggle=1", true, ""},
      {"toggle=7", true, "p7=1"},       {"p1=1", true, "p1=1"},
      {"p1=1&plus=0", false, "p1=1"},   {"p1=1&minus=10", false, "p1=1"},
      {"p1=1&toggle=x", false, "p1=1"},
  };
  for (const auto& row : rows) {
    const FormData form = FormData::parse(row.form).value();
    Selection selection = Selection::fromForm(form).value();
    EXPECT_EQ(applyPressedButton(form, selection), row.accepted) << row.form;
    EXPECT_EQ(selection.toQuery(), row.query) << row.form;
  }
}

TEST(DemoCustomer, IsChecked) {
  const struct {
    Customer customer;
    bool name;
    bool email;
    bool phone;
  } rows[] = {
      {{"Clara", "clara@example.com", ""}, false, false, false},
      {{"Clara", "", "+49 (40) 123-456"}, false, false, false},
      {{"Zoë", "z@a.b", "12345"}, false, false, false},
      {{"", "clara@example.com", ""}, true, false, false},
      {{"Clara", "", ""}, false, true, false},
      {{"Clara", "clara", ""}, false, true, false},
      {{"Clara", "@example.com", ""}, false, true, false},
      {{"Clara", "a@b@c.de", ""}, false, true, false},
      {{"Clara", "a@b", ""}, false, true, false},
      {{"Clara", "a@b.", ""}, false, true, false},
      {{"Clara", "a@.b", ""}, false, true, false},
      {{"Clara", "a@b..de", ""}, false, true, false},
      {{"Clara", "a b@c.de", ""}, false, true, false},
      {{"Clara", "a@c.de", "1234"}, false, false, true},
      {{"Clara", "a@c.de", "12345x"}, false, false, true},
      {{"Clara", "a@c.de", "123+45"}, false, false, true},
      {{"Clara\nSet-Cookie: x", "a@c.de", ""}, true, false, false},
      {{std::string(81, 'a'), "a@c.de", ""}, true, false, false},
  };
  for (const auto& row : rows) {
    const CustomerProblems problems = checkCustomer(row.customer);
    EXPECT_EQ(!problems.name.empty(), row.name)
        << row.customer.name << row.customer.email << row.customer.phone;
    EXPECT_EQ(!problems.email.empty(), row.email) << row.customer.email;
    EXPECT_EQ(!problems.phone.empty(), row.phone) << row.customer.phone;
    EXPECT_EQ(problems.any(), row.name || row.email || row.phone);
  }
  std::string eightyUmlauts;
  for (int count = 0; count < 80; ++count) eightyUmlauts += "ü";
  EXPECT_FALSE(checkCustomer({eightyUmlauts, "a@c.de", ""}).any());
}

TEST(DemoCustomer, IsReadWithoutBlanksAround) {
  const Customer customer = Customer::fromForm(FormData::parse("name=+Clara+L+&phone=%0912345").value());
  EXPECT_EQ(customer.name, "Clara L");
  EXPECT_EQ(customer.email, "");
  EXPECT_EQ(customer.phone, "12345");
}

TEST(DemoOrder, IsToldInOneLine) {
  Order order;
  order.selection = selectionOf("p2=2&p7=1");
  EXPECT_EQ(orderText(order), "2 x Clara 13 × 18 cm, 1 x Blue hour 20 × 30 cm, total €12.70");
}

TEST(DemoOrderCode, CountsOn) {
  EXPECT_EQ(orderCode(0), "A-1042");
  EXPECT_EQ(orderCode(1), "A-1043");
  EXPECT_EQ(orderCode(8957), "A-9999");
  EXPECT_EQ(orderCode(8958), "B-1000");
  EXPECT_EQ(orderCode(26 * 9000 - 42 - 1), "Z-9999");
  EXPECT_EQ(orderCode(26 * 9000 - 42), "A-1000");
}

TEST(DemoOrderBook, FindsWhatWasPlaced) {
  OrderBook book;
  Order order;
  order.customer.name = "Clara";
  EXPECT_EQ(book.place(order, "one"), "A-1042");
  EXPECT_EQ(book.place(order, "two"), "A-1043");
  ASSERT_NE(book.find("A-1042"), nullptr);
  EXPECT_EQ(book.find("A-1042")->code, "A-1042");
  EXPECT_EQ(book.find(" a-1043 ")->customer.name, "Clara");
  EXPECT_EQ(book.find("A-1044"), nullptr);
  EXPECT_EQ(book.find(""), nullptr);
}

TEST(DemoOrderBook, CountsATicketOnce) {
  OrderBook book;
  EXPECT_EQ(book.place({}, "one"), "A-1042");
  EXPECT_EQ(book.place({}, "one"), "A-1042");
  EXPECT_EQ(book.size(), 1u);
  EXPECT_EQ(book.place({}, ""), "A-1043");
  EXPECT_EQ(book.place({}, ""), "A-1044");
}

TEST(DemoOrderBook, ForgetsTheOldest) {
  OrderBook book;
  const std::string first = book.place({}, "first");
  for (std::size_t count = 0; count < OrderBook::kCapacity; ++count) book.place({}, "");
  EXPECT_EQ(book.size(), OrderBook::kCapacity);
  EXPECT_EQ(book.find(first), nullptr);
  EXPECT_NE(book.place({}, "first"), first);
}

}  // namespace
}  // namespace juniva
