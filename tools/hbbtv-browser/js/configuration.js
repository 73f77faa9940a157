// The configuration object (application/oipfConfiguration): the viewer's preferences and
// the terminal's local system, as the TV describes them.
(function (tv) {
    'use strict';
    var TYPE = 'application/oipfConfiguration';
    var values = null;
    function read() {
        if (!values)
            values = tv.call('Configuration.values');
        return values;
    }
    function frozenCopy(source) {
        var copy = {};
        Object.keys(source).forEach(function (name) {
            Object.defineProperty(copy, name, { value: source[name], enumerable: true });
        });
        return copy;
    }
    tv.property(TYPE, 'configuration', function () { return frozenCopy(read().configuration); });
    tv.property(TYPE, 'localSystem', function () { return frozenCopy(read().localSystem); });
})
