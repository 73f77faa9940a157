// The parental control manager (application/oipfParentalControlManager): the rating scheme
// the terminal knows, DVB-SI's minimum ages, with no threshold set.
(function (tv) {
    'use strict';
    var TYPE = 'application/oipfParentalControlManager';
    function Scheme(name, values) {
        Object.defineProperty(this, 'name', { value: name, enumerable: true });
        Object.defineProperty(this, 'length', { value: values.length });
        for (var i = 0; i < values.length; ++i)
            Object.defineProperty(this, i, { value: values[i], enumerable: true });
        this.item = function (index) { return values[index] === undefined ? null : values[index]; };
        this.indexOf = function (ratingValue) { return values.indexOf(String(ratingValue)); };
        this.iconUri = function () { return null; };
        // No minimum age is set on this terminal.
        Object.defineProperty(this, 'threshold', { value: tv.parentalRating({ scheme: name }) });
    }
    var ages = [];
    for (var age = 4; age <= 18; ++age)
        ages.push(String(age));
    var schemes = [new Scheme('dvb-si', ages)];
    var collection = {
        length: schemes.length,
        item: function (index) { return schemes[index] || null; },
        getParentalRatingScheme: function (name) {
            return schemes.filter(function (s) { return s.name === name; })[0] || null;
        }
    };
    collection[0] = schemes[0];
    tv.property(TYPE, 'parentalRatingSchemes', function () { return collection; });
})
