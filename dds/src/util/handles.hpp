#pragma once

// What the untyped procedural handles point to: bases of the layer's own objects.

struct DDS_DataWriter {};
struct DDS_DataReader {};
struct DDS_ReadCondition {};
