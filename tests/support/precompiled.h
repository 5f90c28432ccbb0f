#pragma once

/// What most tests include, compiled once for all of them. Only what comes from outside and seldom
/// changes belongs here: a change compiles every test anew. A test still includes what it uses; the
/// preset "coverage" builds without this header and so finds the ones that do not.

#include <bsoncxx/v1/array/value.hpp>
#include <bsoncxx/v1/document/value.hpp>
#include <bsoncxx/v1/exception.hpp>
#include <bsoncxx/v1/types/value.hpp>
#include <mongocxx/v1/client.hpp>
#include <mongocxx/v1/collection.hpp>
#include <mongocxx/v1/cursor.hpp>
#include <mongocxx/v1/database.hpp>
#include <mongocxx/v1/exception.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QByteArray>
#include <QDateTime>
#include <QDebug>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QUrl>
#include <QVariant>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <functional>
#include <iostream>
#include <limits>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <random>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>
