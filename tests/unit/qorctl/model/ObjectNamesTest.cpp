#include <gtest/gtest.h>

#include "model/ObjectNames.h"

namespace {

using qorctl::CDriveIdentity;
using qorctl::CQuantity;
using qorctl::ENameForm;

CDriveIdentity Drive() {
    return {.controller = 0,
            .place = {.enclosure = 252, .slot = 3},
            .number = 7,
            .serial = "S123",
            .product = "ST600",
            .capacity = CQuantity{"558.912GB", 600127190335},
            .twin = 1};
}

TEST(ObjectNamesTest, DriveIsNamedByPlaceNumberSerialNumberProductAndSize) {
    EXPECT_EQ(DriveName(Drive()), "controller 0 drive 252:3 (PD7, serial S123, ST600 558.912GB)");
}

TEST(ObjectNamesTest, ProductGoesFirstWhereThereIsLittleRoom) {
    EXPECT_EQ(DriveName(Drive(), ENameForm::WITHOUT_PRODUCT),
              "controller 0 drive 252:3 (PD7, serial S123, 558.912GB)");
    EXPECT_EQ(DriveName(Drive(), ENameForm::SHORT), "controller 0 drive 252:3 (PD7, serial S123)");
}

TEST(ObjectNamesTest, LongestFormThatFitsIsTaken) {
    const auto take = [](size_t most) {
        return qorctl::LongestForm(
            [most](ENameForm form) { return DriveName(Drive(), form).size() <= most; });
    };
    EXPECT_EQ(take(60), ENameForm::WHOLE);
    EXPECT_EQ(take(59), ENameForm::WITHOUT_PRODUCT);
    EXPECT_EQ(take(54), ENameForm::WITHOUT_PRODUCT);
    EXPECT_EQ(take(53), ENameForm::SHORT);
    EXPECT_EQ(take(1), ENameForm::SHORT);
}

TEST(ObjectNamesTest, WhatTheToolDidNotSayIsLeftOut) {
    CDriveIdentity drive = Drive();
    drive.number.reset();
    drive.product.reset();
    EXPECT_EQ(DriveName(drive), "controller 0 drive 252:3 (serial S123, 558.912GB)");
    drive.place.enclosure.reset();
    EXPECT_EQ(DriveName(drive), "controller 0 drive ?:3 (serial S123, 558.912GB)");
    drive.place = {};
    drive.number = 7;
    EXPECT_EQ(DriveName(drive), "controller 0 drive PD7 (serial S123, 558.912GB)");
    EXPECT_EQ(qorctl::DriveName({}), "controller ? drive PD?");
    EXPECT_EQ(qorctl::DriveName({.controller = 0, .number = 7, .product = "ST600"}),
              "controller 0 drive PD7 (ST600)");
}

TEST(ObjectNamesTest, SecondOneOfANameIsToldApart) {
    CDriveIdentity drive = Drive();
    drive.twin = 2;
    EXPECT_EQ(DriveName(drive, ENameForm::SHORT),
              "controller 0 drive 252:3 (PD7, serial S123) (2)");
}

}  // namespace
