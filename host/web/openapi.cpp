// What the API can do, for programs that read such. Tested by
// tests/unit/host/web_document_test.cpp, which runs every example in it.
#include "host/web/api.h"

namespace host {

const char* const kOpenApi = R"json({
  "openapi": "3.0.3",
  "info": {
    "title": "PagerFwd",
    "version": "1",
    "description": "Alarms in, answers out. Every answer that an alarm was taken comes behind the commit. A mistake is answered with a sentence, and with the field that is meant."
  },
  "security": [{"token": []}],
  "paths": {
    "/api/v1/alarms": {
      "post": {
        "summary": "Raise alarms, all or none",
        "description": "One object, or a list of at most 1000; the answer is a list. Only the text has to be there. While an alarm of the same source and key is open, it is counted and has the newer text, and nobody is paged anew. Without a source, a key is that of the token's owner. Right: raise.",
        "requestBody": {
          "required": true,
          "content": {"application/json": {
            "schema": {"oneOf": [{"$ref": "#/components/schemas/NewAlarm"}, {"type": "array", "maxItems": 1000, "items": {"$ref": "#/components/schemas/NewAlarm"}}]},
            "examples": {
              "one": {"value": {"text": "Pump 3 stands still"}},
              "many": {"value": [{"text": "Disk full", "group": "ops/1", "severity": "major", "server": "web1", "source": "icinga", "key": "web1!disk"}, {"text": "No water", "key": "water"}]}
            }
          }}
        },
        "responses": {
          "200": {"description": "They are raised", "content": {"application/json": {"schema": {"type": "array", "items": {"type": "object", "properties": {"alarm": {"type": "integer"}, "new": {"type": "boolean"}}}}}}},
          "400": {"$ref": "#/components/responses/Mistake"},
          "401": {"$ref": "#/components/responses/NoToken"},
          "403": {"$ref": "#/components/responses/NoRight"},
          "413": {"$ref": "#/components/responses/TooLarge"},
          "429": {"$ref": "#/components/responses/TooMany"},
          "503": {"$ref": "#/components/responses/Away"}
        }
      },
      "get": {
        "summary": "Alarms, in the order in which they came",
        "description": "Right: look.",
        "parameters": [{"$ref": "#/components/parameters/after"}, {"$ref": "#/components/parameters/count"}],
        "responses": {
          "200": {"description": "Alarms, and where to go on; next is null behind the last", "content": {"application/json": {"schema": {"type": "object", "properties": {"alarms": {"type": "array", "items": {"$ref": "#/components/schemas/Alarm"}}, "next": {"type": "integer", "nullable": true}}}}}},
          "400": {"$ref": "#/components/responses/Mistake"},
          "401": {"$ref": "#/components/responses/NoToken"},
          "403": {"$ref": "#/components/responses/NoRight"},
          "429": {"$ref": "#/components/responses/TooMany"},
          "503": {"$ref": "#/components/responses/Away"}
        }
      }
    },
    "/api/v1/alarms/{alarm}": {
      "get": {
        "summary": "An alarm, and what became of it",
        "description": "Right: look.",
        "parameters": [{"name": "alarm", "in": "path", "required": true, "schema": {"type": "integer"}, "example": 978948000}],
        "responses": {
          "200": {"description": "The alarm, with its story", "content": {"application/json": {"schema": {"$ref": "#/components/schemas/Alarm"}}}},
          "400": {"$ref": "#/components/responses/Mistake"},
          "401": {"$ref": "#/components/responses/NoToken"},
          "403": {"$ref": "#/components/responses/NoRight"},
          "404": {"$ref": "#/components/responses/Mistake"},
          "429": {"$ref": "#/components/responses/TooMany"},
          "503": {"$ref": "#/components/responses/Away"}
        }
      }
    },
    "/api/v1/alarms/withdraw": {
      "post": {
        "summary": "Say that what alarms told of is over",
        "description": "By source and key, or by the number. That no alarm of a key is open is no mistake: it is answered with null. Right: raise.",
        "requestBody": {
          "required": true,
          "content": {"application/json": {
            "schema": {"oneOf": [{"$ref": "#/components/schemas/Withdrawal"}, {"type": "array", "maxItems": 1000, "items": {"$ref": "#/components/schemas/Withdrawal"}}]},
            "examples": {
              "key": {"value": {"source": "icinga", "key": "web1!disk"}},
              "many": {"value": [{"key": "water"}, {"alarm": 978948000}]}
            }
          }}
        },
        "responses": {
          "200": {"description": "No further page leaves", "content": {"application/json": {"schema": {"type": "array", "items": {"type": "object", "properties": {"alarm": {"type": "integer", "nullable": true}, "resolved": {"type": "boolean"}}}}}}},
          "400": {"$ref": "#/components/responses/Mistake"},
          "401": {"$ref": "#/components/responses/NoToken"},
          "403": {"$ref": "#/components/responses/NoRight"},
          "413": {"$ref": "#/components/responses/TooLarge"},
          "429": {"$ref": "#/components/responses/TooMany"},
          "503": {"$ref": "#/components/responses/Away"}
        }
      }
    },
    "/api/v1/alarms/acknowledge": {
      "post": {
        "summary": "Acknowledge alarms, all or none",
        "description": "The trail names who did, and the token. Right: acknowledge.",
        "requestBody": {
          "required": true,
          "content": {"application/json": {
            "schema": {"oneOf": [{"$ref": "#/components/schemas/Acknowledgement"}, {"type": "array", "maxItems": 1000, "items": {"$ref": "#/components/schemas/Acknowledgement"}}]},
            "examples": {
              "one": {"value": {"alarm": 978948000, "by": "maria", "comment": "on my way"}}
            }
          }}
        },
        "responses": {
          "200": {"description": "No further page leaves", "content": {"application/json": {"schema": {"type": "array", "items": {"type": "object", "properties": {"alarm": {"type": "integer"}, "acknowledged": {"type": "boolean"}}}}}}},
          "400": {"$ref": "#/components/responses/Mistake"},
          "401": {"$ref": "#/components/responses/NoToken"},
          "403": {"$ref": "#/components/responses/NoRight"},
          "413": {"$ref": "#/components/responses/TooLarge"},
          "429": {"$ref": "#/components/responses/TooMany"},
          "503": {"$ref": "#/components/responses/Away"}
        }
      }
    },
    "/api/v1/alertmanager": {
      "post": {
        "summary": "The webhook of Alertmanager, version 4",
        "description": "Each alert is an alarm, as the templates of the site say. Its key is its fingerprint and the time at which it began: what comes again changes nothing. Right: raise.",
        "requestBody": {
          "required": true,
          "content": {"application/json": {
            "schema": {"type": "object"},
            "examples": {
              "group": {"value": {"version": "4", "groupKey": "{}:{alertname=\"DiskFull\"}", "truncatedAlerts": 0, "status": "firing", "receiver": "pagerfwd", "groupLabels": {"alertname": "DiskFull"}, "commonLabels": {"alertname": "DiskFull", "severity": "warning"}, "commonAnnotations": {}, "externalURL": "http://monitor:9093", "alerts": [
                {"status": "firing", "labels": {"alertname": "DiskFull", "severity": "warning", "instance": "web1"}, "annotations": {"summary": "Disk of web1 is 95 % full"}, "startsAt": "2001-01-08T10:00:00Z", "endsAt": "0001-01-01T00:00:00Z", "generatorURL": "http://monitor:9090/graph", "fingerprint": "c5d0a1b2e3f40516"},
                {"status": "resolved", "labels": {"alertname": "DiskFull", "severity": "warning", "instance": "web2"}, "annotations": {}, "startsAt": "2001-01-08T09:00:00Z", "endsAt": "2001-01-08T09:30:00Z", "generatorURL": "", "fingerprint": "0a1b2c3d4e5f6071"}
              ]}}
            }
          }}
        },
        "responses": {
          "200": {"description": "How many were raised, were known before, were resolved", "content": {"application/json": {"schema": {"type": "object", "properties": {"raised": {"type": "integer"}, "known": {"type": "integer"}, "resolved": {"type": "integer"}}}}}},
          "400": {"$ref": "#/components/responses/Mistake"},
          "401": {"$ref": "#/components/responses/NoToken"},
          "403": {"$ref": "#/components/responses/NoRight"},
          "413": {"$ref": "#/components/responses/TooLarge"},
          "429": {"$ref": "#/components/responses/TooMany"},
          "503": {"$ref": "#/components/responses/Away"}
        }
      }
    },
    "/api/v1/pages": {
      "get": {
        "summary": "Pending pages, alarm by alarm",
        "description": "Those of one alarm come together, be they more than are asked for. Right: look.",
        "parameters": [{"$ref": "#/components/parameters/after"}, {"$ref": "#/components/parameters/count"}],
        "responses": {
          "200": {"description": "Pages, how many there are in all, and where to go on", "content": {"application/json": {"schema": {"type": "object", "properties": {"pages": {"type": "array", "items": {"$ref": "#/components/schemas/Page"}}, "pending": {"type": "integer"}, "next": {"type": "integer", "nullable": true}}}}}},
          "400": {"$ref": "#/components/responses/Mistake"},
          "401": {"$ref": "#/components/responses/NoToken"},
          "403": {"$ref": "#/components/responses/NoRight"},
          "429": {"$ref": "#/components/responses/TooMany"},
          "503": {"$ref": "#/components/responses/Away"}
        }
      }
    },
    "/api/v1/history": {
      "get": {
        "summary": "Changes of pages, in the order in which they happened",
        "description": "Right: look.",
        "parameters": [{"$ref": "#/components/parameters/after"}, {"$ref": "#/components/parameters/count"}],
        "responses": {
          "200": {"description": "Changes, and where to go on; next is null behind the last", "content": {"application/json": {"schema": {"type": "object", "properties": {"history": {"type": "array", "items": {"$ref": "#/components/schemas/Change"}}, "next": {"type": "integer", "nullable": true}}}}}},
          "400": {"$ref": "#/components/responses/Mistake"},
          "401": {"$ref": "#/components/responses/NoToken"},
          "403": {"$ref": "#/components/responses/NoRight"},
          "429": {"$ref": "#/components/responses/TooMany"},
          "503": {"$ref": "#/components/responses/Away"}
        }
      }
    },
    "/api/v1/test": {
      "post": {
        "summary": "Have a test page sent",
        "description": "A line of the running node sends it, behind the page before it; that takes minutes. Right: manage.",
        "requestBody": {
          "required": true,
          "content": {"application/json": {
            "schema": {"type": "object", "required": ["pager"], "additionalProperties": false, "properties": {"pager": {"type": "string"}, "line": {"type": "string"}}},
            "examples": {
              "pager": {"value": {"pager": "duty"}}
            }
          }}
        },
        "responses": {
          "200": {"description": "The number of the test", "content": {"application/json": {"schema": {"type": "object", "properties": {"test": {"type": "integer"}}}}}},
          "400": {"$ref": "#/components/responses/Mistake"},
          "401": {"$ref": "#/components/responses/NoToken"},
          "403": {"$ref": "#/components/responses/NoRight"},
          "413": {"$ref": "#/components/responses/TooLarge"},
          "429": {"$ref": "#/components/responses/TooMany"},
          "503": {"$ref": "#/components/responses/Away"}
        }
      }
    },
    "/api/v1/test/{test}": {
      "get": {
        "summary": "What came of a test page",
        "description": "Right: manage.",
        "parameters": [{"name": "test", "in": "path", "required": true, "schema": {"type": "integer"}, "example": 1}],
        "responses": {
          "200": {"description": "Whether it is done; then whether it was sent, and the library's result", "content": {"application/json": {"schema": {"type": "object", "properties": {"test": {"type": "integer"}, "done": {"type": "boolean"}, "sent": {"type": "boolean"}, "result": {"type": "integer"}}}}}},
          "400": {"$ref": "#/components/responses/Mistake"},
          "401": {"$ref": "#/components/responses/NoToken"},
          "403": {"$ref": "#/components/responses/NoRight"},
          "404": {"$ref": "#/components/responses/Mistake"},
          "429": {"$ref": "#/components/responses/TooMany"},
          "503": {"$ref": "#/components/responses/Away"}
        }
      }
    },
    "/api/v1/lines": {
      "get": {
        "summary": "Lines: their health, and what they do",
        "description": "Right: look.",
        "responses": {
          "200": {"description": "The lines", "content": {"application/json": {"schema": {"type": "object", "properties": {"lines": {"type": "array", "items": {"$ref": "#/components/schemas/Line"}}}}}}},
          "400": {"$ref": "#/components/responses/Mistake"},
          "401": {"$ref": "#/components/responses/NoToken"},
          "403": {"$ref": "#/components/responses/NoRight"},
          "429": {"$ref": "#/components/responses/TooMany"},
          "503": {"$ref": "#/components/responses/Away"}
        }
      }
    },
    "/api/v1/nodes": {
      "get": {
        "summary": "Nodes: which run, and which leads",
        "description": "Right: look.",
        "responses": {
          "200": {"description": "The nodes", "content": {"application/json": {"schema": {"type": "object", "properties": {"nodes": {"type": "array", "items": {"$ref": "#/components/schemas/Node"}}}}}}},
          "400": {"$ref": "#/components/responses/Mistake"},
          "401": {"$ref": "#/components/responses/NoToken"},
          "403": {"$ref": "#/components/responses/NoRight"},
          "429": {"$ref": "#/components/responses/TooMany"},
          "503": {"$ref": "#/components/responses/Away"}
        }
      }
    }
  },
  "components": {
    "securitySchemes": {"token": {"type": "http", "scheme": "bearer"}},
    "parameters": {
      "after": {"name": "after", "in": "query", "description": "next, of the answer before", "schema": {"type": "integer", "minimum": 0}, "example": 0},
      "count": {"name": "count", "in": "query", "description": "how many at most", "schema": {"type": "integer", "minimum": 0, "maximum": 1000, "default": 100}, "example": 5}
    },
    "schemas": {
      "NewAlarm": {
        "type": "object",
        "required": ["text"],
        "additionalProperties": false,
        "properties": {
          "text": {"type": "string"},
          "group": {"type": "string", "default": "ALARM/000"},
          "severity": {"type": "string", "enum": ["critical", "major", "minor", "informational", "unknown"], "default": "critical"},
          "server": {"type": "string", "description": "without it, the token's name"},
          "source": {"type": "string", "maxLength": 128},
          "key": {"type": "string", "maxLength": 512}
        }
      },
      "Withdrawal": {
        "type": "object",
        "additionalProperties": false,
        "properties": {
          "source": {"type": "string"},
          "key": {"type": "string"},
          "alarm": {"type": "integer"}
        }
      },
      "Acknowledgement": {
        "type": "object",
        "required": ["alarm"],
        "additionalProperties": false,
        "properties": {
          "alarm": {"type": "integer"},
          "by": {"type": "string"},
          "comment": {"type": "string"}
        }
      },
      "Alarm": {
        "type": "object",
        "properties": {
          "alarm": {"type": "integer"},
          "raised": {"type": "string", "format": "date-time"},
          "severity": {"type": "string"},
          "group": {"type": "string"},
          "server": {"type": "string"},
          "text": {"type": "string"},
          "state": {"type": "string"},
          "source": {"type": "string"},
          "key": {"type": "string"},
          "times": {"type": "integer"},
          "acknowledged": {"type": "object", "nullable": true},
          "resolved": {"type": "string", "format": "date-time", "nullable": true},
          "story": {"type": "array", "items": {"type": "object"}}
        }
      },
      "Page": {
        "type": "object",
        "properties": {
          "alarm": {"type": "integer"},
          "group": {"type": "string"},
          "pager": {"type": "string"},
          "state": {"type": "string"},
          "tries": {"type": "integer"},
          "of": {"type": "integer", "description": "how many tries there are at most"},
          "queued": {"type": "string", "format": "date-time", "nullable": true},
          "due": {"type": "string", "format": "date-time", "nullable": true},
          "line": {"type": "string", "nullable": true}
        }
      },
      "Line": {
        "type": "object",
        "properties": {
          "line": {"type": "string"},
          "health": {"type": "string"},
          "since": {"type": "string", "format": "date-time", "nullable": true},
          "reason": {"type": "string"},
          "paused": {"type": "boolean"},
          "doing": {"type": "string"},
          "node": {"type": "string", "nullable": true}
        }
      },
      "Node": {
        "type": "object",
        "properties": {
          "node": {"type": "string"},
          "runs": {"type": "boolean"},
          "leads": {"type": "boolean"},
          "drained": {"type": "boolean"},
          "in_site_file": {"type": "boolean"},
          "process": {"type": "string", "nullable": true}
        }
      },
      "Change": {
        "type": "object",
        "properties": {
          "at": {"type": "string", "format": "date-time"},
          "alarm": {"type": "integer"},
          "group": {"type": "string"},
          "pager": {"type": "string"},
          "change": {"type": "string"},
          "state": {"type": "string"},
          "tries": {"type": "integer"},
          "line": {"type": "string", "nullable": true},
          "note": {"type": "string"}
        }
      },
      "Error": {
        "type": "object",
        "required": ["error"],
        "properties": {"error": {"type": "string"}, "field": {"type": "string"}}
      }
    },
    "responses": {
      "Mistake": {"description": "What is wrong, in a sentence", "content": {"application/json": {"schema": {"$ref": "#/components/schemas/Error"}}}},
      "NoToken": {"description": "A token is needed"},
      "NoRight": {"description": "The token is not good for this"},
      "TooLarge": {"description": "The body is longer than 1 MiB"},
      "TooMany": {"description": "Too many requests from this source; Retry-After says when"},
      "Away": {"description": "The database is away; Retry-After says when to try again"}
    }
  }
})json";

}  // namespace host
