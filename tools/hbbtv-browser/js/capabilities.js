// The capabilities object (application/oipfCapabilities): the profiles the terminal
// announces, as an XML document, and the questions a page asks about them.
(function (tv) {
    'use strict';
    var TYPE = 'application/oipfCapabilities';
    var text = null;
    function xmlText() {
        if (text === null)
            text = tv.call('Capabilities.xml');
        return text;
    }
    function document() {
        return new DOMParser().parseFromString(xmlText(), 'text/xml');
    }
    // "OITF_HD_UIPROF+DVB_T+DL": the whole name, its base and each "+" fragment.
    function capabilities() {
        var profile = document().getElementsByTagName('ui_profile')[0];
        var name = profile ? profile.getAttribute('name') : '';
        var parts = name.split('+');
        return [name, parts[0]].concat(parts.slice(1).map(function (part) { return '+' + part; }));
    }
    tv.property(TYPE, 'xmlCapabilities', function () { return document(); });
    tv.property(TYPE, 'extraSDVideoDecodes', function () { return 0; });
    tv.property(TYPE, 'extraHDVideoDecodes', function () { return 0; });
    tv.method(TYPE, 'hasCapability', function (profileName) {
        return capabilities().indexOf(String(profileName)) >= 0;
    });
})
