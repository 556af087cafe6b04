#pragma once

#include <dds/topic.hpp>
#include <dds/type_plugin.hpp>
#include <memory>
#include <string>
#include <utility>

#include "domain/quiet_entity.hpp"
#include "filter/filter.hpp"

namespace dds {

class TopicImpl final : public QuietEntity<DDSTopic> {
 public:
  TopicImpl(DDSDomainParticipant& participant, const char* name, const char* type_name, const DDS_TypePlugin& type,
            const DDS_TopicQos& qos)
      : participant_(participant), name_(name), type_name_(type_name), type_(type), qos_(qos) {}

  const char* get_name() override { return name_.c_str(); }
  const char* get_type_name() override { return type_name_.c_str(); }
  DDSDomainParticipant* get_participant() override { return &participant_; }
  DDS_ReturnCode_t get_qos(DDS_TopicQos& qos) override {
    qos = qos_;
    return DDS_RETCODE_OK;
  }

  const std::string& name() const { return name_; }
  const std::string& type_name() const { return type_name_; }
  const DDS_TypePlugin& type() const { return type_; }

  int users = 0;  // writers, readers and content-filtered topics; under the participant's lock

 private:
  DDSDomainParticipant& participant_;
  const std::string name_;
  const std::string type_name_;
  const DDS_TypePlugin type_;
  const DDS_TopicQos qos_;
};

class ContentFilteredTopicImpl final : public DDSContentFilteredTopic {
 public:
  ContentFilteredTopicImpl(const char* name, TopicImpl& topic, const char* expression, DDS_StringSeq parameters,
                           std::unique_ptr<const Filter> filter)
      : name_(name),
        topic_(topic),
        expression_(expression),
        parameters_(std::move(parameters)),
        filter_(std::move(filter)) {}

  const char* get_name() override { return name_.c_str(); }
  const char* get_type_name() override { return topic_.get_type_name(); }
  DDSDomainParticipant* get_participant() override { return topic_.get_participant(); }
  DDSTopic* get_related_topic() override { return &topic_; }
  const char* get_filter_expression() override { return expression_.c_str(); }
  DDS_ReturnCode_t get_expression_parameters(DDS_StringSeq& parameters) override {
    return parameters.assign(parameters_) ? DDS_RETCODE_OK : DDS_RETCODE_OUT_OF_RESOURCES;
  }

  TopicImpl& topic() const { return topic_; }
  const Filter* filter() const { return filter_.get(); }

  int users = 0;  // readers; under the participant's lock

 private:
  const std::string name_;
  TopicImpl& topic_;
  const std::string expression_;
  const DDS_StringSeq parameters_;
  const std::unique_ptr<const Filter> filter_;
};

}  // namespace dds
