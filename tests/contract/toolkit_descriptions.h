#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tests/fakes/fake_drop_view.h"
#include "tests/fakes/fake_settings_form.h"
#include "tests/fakes/fake_window_system.h"

// The windows of the toolkit's contract tests, once as files and once for the fakes.
//
// "Contract": a window of 640 x 480 whose content view holds the views "first" (named "First", tag 41) and
// "second", which cover it, and above them a row of the button "button" (action "press:"), the button
// "unset" (action "nobody:"), the field "field" (action "enter:") and the control "segments" of three
// segments (action "choose:"), and the image view "picture" in the lower left corner. Its overlay has the
// view named "shade". "ContractDrops": a window of the same size whose content view holds the view "page" and
// above it the drop view "drops". "ContractSheet": a sheet with the field "name" and the button "close"
// (action "close:"). "ContractForm": a sheet with the button "elsewhere" and the settings form "form".
inline std::vector<std::pair<std::string, std::string>> toolkitDescriptions() {
  const std::string begin = R"(<?xml version="1.0" encoding="UTF-8"?><interface>)";
  const std::string end = "</interface>";
  const auto layer = [](const std::string& content) {
    return "<object class=\"LumoLayerBin\"><property name=\"free\">1</property><child>" + content +
           "</child></object>";
  };
  const auto segment = [](const std::string& name) {
    return "<child><object class=\"GtkButton\"><property name=\"label\">" + name +
           "</property><signal name=\"clicked\" handler=\"choose:\"/></object></child>";
  };
  const std::string row = R"(
    <object class="GtkBox" id="row">
      <property name="halign">start</property><property name="valign">start</property>
      <child><object class="GtkButton" id="button">
        <property name="label">Press</property><signal name="clicked" handler="press:"/>
      </object></child>
      <child><object class="GtkButton" id="unset">
        <property name="label">Unset</property><signal name="clicked" handler="nobody:"/>
      </object></child>
      <child><object class="GtkEntry" id="field"><signal name="activate" handler="enter:"/></object></child>
      <child><object class="GtkBox" id="segments"><style><class name="segmented"/></style>)" +
                          segment("one") + segment("two") + segment("three") + "</object></child></object>";
  const std::string content =
      R"(<object class="GtkOverlay" id="contentView"><child type="overlay">)" +
      layer(R"(<object class="GtkOverlay" id="first"><property name="name">First</property>
                 <style><class name="tag-41"/></style></object>)") +
      R"(</child><child type="overlay">)" + layer(R"(<object class="GtkOverlay" id="second"></object>)") +
      R"(</child><child type="overlay">)" + row +
      R"(</child><child type="overlay"><object class="GtkImage" id="picture">
           <property name="halign">start</property><property name="valign">end</property>
           <property name="pixel-size">32</property></object></child></object>)";
  const std::string overlay =
      R"(<object class="GtkOverlay" id="ibChildWindow"><property name="child">)" +
      layer(R"(<object class="GtkBox"><property name="name">shade</property></object>)") +
      "</property></object>";
  const std::string window = R"(
    <object class="GtkWindow" id="window">
      <property name="title">Contract</property>
      <property name="default-width">640</property><property name="default-height">480</property>
      <style><class name="lumo-browser"/></style>
      <property name="titlebar">
        <object class="GtkBox"><property name="visible">0</property></object>
      </property>
      <property name="child"><object class="GtkOverlay" id="sheetRoot"><property name="child">
        <object class="GtkOverlay"><property name="child">)" +
                             layer(content) + "</property><child type=\"overlay\">" + layer(overlay) +
                             "</child></object></property></object></property></object>";
  const std::string drops =
      R"(
    <object class="GtkWindow" id="window">
      <property name="default-width">640</property><property name="default-height">480</property>
      <style><class name="lumo-browser"/></style>
      <property name="titlebar">
        <object class="GtkBox"><property name="visible">0</property></object>
      </property>
      <property name="child">)" +
      layer(R"(<object class="GtkOverlay" id="contentView"><child type="overlay">)" +
            layer(R"(<object class="GtkOverlay" id="page"/>)") + R"(</child><child type="overlay">)" +
            layer(R"(<object class="LumoDropLayer" id="drops"/>)") + "</child></object>") +
      "</property></object>";
  const std::string sheet = R"(
    <object class="GtkBox" id="sheet"><property name="orientation">vertical</property>
      <child><object class="GtkEntry" id="name"/></child>
      <child><object class="GtkButton" id="close">
        <property name="label">Close</property><signal name="clicked" handler="close:"/>
      </object></child>
    </object>)";
  const std::string form = R"(
    <object class="GtkBox" id="sheet"><property name="orientation">vertical</property>
      <child><object class="GtkButton" id="elsewhere"><property name="label">Elsewhere</property></object></child>
      <child><object class="GtkScrolledWindow">
        <property name="height-request">300</property><property name="width-request">400</property>
        <property name="child">
          <object class="GtkBox" id="form"><style><class name="lumo-settings-form"/></style></object>
        </property></object></child>
    </object>)";
  return {{"Contract.ui", begin + window + end},
          {"ContractDrops.ui", begin + drops + end},
          {"ContractSheet.ui", begin + sheet + end},
          {"ContractForm.ui", begin + form + end},
          {"Damaged.ui", begin + "<object class=\"GtkWindow\" id=\"window\">"},
          {"Unknown.ui", begin + "<object class=\"NoSuchThing\" id=\"window\"/>" + end},
          {"Rootless.ui", begin + "<object class=\"GtkBox\" id=\"window\"/>" + end}};
}

inline void describeContractWindows(fakes::FakeWindowSystem& windows) {
  using fakes::FakeButton;
  using fakes::FakeView;
  using fakes::FakeWindow;
  using fakes::ViewOptions;
  windows.describe("Contract", FakeWindow::Kind::Toplevel, [](FakeWindow& window) {
    ViewOptions covering;
    covering.frame = {0, 0, 640, 480};
    ViewOptions first = covering;
    first.identifier = "First";
    first.tag = 41;
    const auto acting = [](const std::string& action) {
      ViewOptions options;
      options.action = action;
      return options;
    };
    ViewOptions shade = covering;
    shade.identifier = "shade";
    window.setInitialFrame(covering.frame);
    window.setTitle("Contract");
    window.add<FakeView>("first", first);
    window.add<FakeView>("second", covering);
    FakeView& row = window.add<FakeView>("row");
    window.add<FakeButton>("button", acting("press:"), &row);
    window.add<FakeButton>("unset", acting("nobody:"), &row);
    window.add<fakes::FakeTextField>("field", acting("enter:"), &row);
    window.add<fakes::FakeSegmentedControl>("segments", acting("choose:"), &row);
    window.add<fakes::FakeImageView>("picture");
    window.add<FakeView>("shade", shade, &window.addOverlay().contentView());
  });
  windows.describe("ContractDrops", FakeWindow::Kind::Toplevel, [](FakeWindow& window) {
    ViewOptions covering;
    covering.frame = {0, 0, 640, 480};
    window.setInitialFrame(covering.frame);
    window.add<FakeView>("page", covering);
    window.add<fakes::FakeDropView>("drops", covering);
  });
  windows.describe("ContractSheet", FakeWindow::Kind::Sheet, [](FakeWindow& window) {
    ViewOptions close;
    close.action = "close:";
    window.add<fakes::FakeTextField>("name");
    window.add<FakeButton>("close", close);
  });
  windows.describe("ContractForm", FakeWindow::Kind::Sheet, [](FakeWindow& window) {
    window.add<FakeButton>("elsewhere");
    window.add<fakes::FakeSettingsForm>("form");
  });
}
